// Cuts the text of expressions into tokens: names, numbers and strings as the scanner reads them; comparisons; and
// punctuation, one of # ( ) * + , - / : ; ? ^ { | }
#pragma once

#include <string_view>

#include "quarn.h"
#include "scanner.h"

namespace quarn {

// A comparison is the code of its operator, negated.
constexpr q_operator_t comparison_of(token comparison) noexcept { return -comparison; }

class expression_lexer {
public:
    explicit expression_lexer(scanner& in) noexcept : in_(in) {}

    // Reads a token. Throws reported_failure, after reporting, where the text has none.
    token next();
    // Reads the next token if it begins with one of these characters; else null.
    token accept(std::string_view firsts);

private:
    token read_comparison(char first);

    scanner& in_;
};

}  // namespace quarn
