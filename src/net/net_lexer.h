// Cuts NET text into tokens.
//
//   name         letter or '_', then letters, digits and '_'
//   dotted name  names joined by '.'
//   number       decimal: optional sign, digits with an optional point, optional exponent
//   string       between double quotes, with the escapes of C
//   punctuation  # ( ) * + , - : ; = ? { | }
//   comment      from % to the end of the line
//
// Letters, digits and blanks are those of the "C" locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "parse_reports.h"

namespace quarn {

// A character of punctuation stands for itself.
enum token : int {
    token_name = -1,
    token_number = -2,
    token_string = -3,
    token_dotted_name = -4,
    token_end = -5,
    token_error = -6  // a sign or point that starts no number
};

// What positions count: lines from 1, in files; characters from the start, in text from memory.
enum class position_unit : unsigned char { line, character };

class net_lexer {
public:
    // The source and the reports must outlive the lexer.
    net_lexer(std::string_view source, position_unit unit, parse_reports& reports) noexcept
        : source_(source), unit_(unit), reports_(&reports) {}

    // Reads a token. Throws reported_failure, after reporting, where the text has none.
    token next();
    // Of the last name or string token. A string may hold null characters.
    const std::string& text() const noexcept { return text_; }
    // Of the last number token.
    double number() const noexcept { return number_; }
    bool number_has_sign() const noexcept { return number_has_sign_; }

    // How far the text has been read.
    std::size_t position() const noexcept { return unit_ == position_unit::line ? line_ : place_; }
    [[gnu::format(printf, 2, 3)]] void report(const char* format, ...);
    // Reports an error, then throws reported_failure.
    [[noreturn, gnu::format(printf, 2, 3)]] void fail(const char* format, ...);

private:
    bool at_end() const noexcept { return place_ == source_.size(); }
    bool starts_number() const noexcept;

    void skip_blanks();
    token read_token();
    token read_name();
    token read_number();
    token read_string();
    void read_escape();
    void append_code(char escape, unsigned base, std::size_t most_digits);
    void append(char c);

    std::string_view source_;
    std::size_t place_ = 0;
    std::size_t line_ = 1;
    position_unit unit_;
    parse_reports* reports_;
    std::string text_;
    double number_ = 0;
    bool number_has_sign_ = false;
};

}  // namespace quarn
