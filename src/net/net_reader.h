// Tokens with one token of lookahead, and what the productions of the NET language have in common.
#pragma once

#include <cstdint>
#include <string>

#include "net_lexer.h"

namespace quarn {

class net_reader : private net_lexer {
public:
    using net_lexer::fail;
    using net_lexer::net_lexer;
    using net_lexer::number;
    using net_lexer::number_has_sign;
    using net_lexer::position;
    using net_lexer::report;
    using net_lexer::text;

    // What an expression is to be read from, while no token is pushed back.
    scanner& source() noexcept { return *this; }

    token next();
    // The last token is to come again.
    void push_back() noexcept { is_pushed_back_ = true; }
    // Whether the last token is a name, dotted or not.
    bool is_name() const noexcept { return last_ == token_name || last_ == token_dotted_name; }

    // Reads the character if it comes next.
    bool accept(char character);
    // These fail with a message that tells what should have come. Texts are those of the last token.
    void expect(char character);
    const std::string& expect_name();
    double expect_number();
    const std::string& expect_string(const char* message);
    // Reads the name of the next attribute in a block; false at the end of the block.
    bool next_attribute(std::string& name);
    // A value that must be a string: '=' STRING ';'
    std::string expect_string_value(const char* message);

private:
    token last_ = token_end;
    bool is_pushed_back_ = false;
};

// What a user attribute must be.
inline constexpr const char* user_attribute_message = "value of a user-defined attribute must be a string";

// The integer that a number is cut to; the nearest one there is when it is out of range.
int32_t truncate(double number) noexcept;

}  // namespace quarn
