// Cuts NET text into tokens: names, numbers and strings as the scanner reads them, but numbers may have a sign; and
// punctuation, one of # ( ) * + , - : ; = ? { | }
#pragma once

#include "scanner.h"

namespace quarn {

class net_lexer : public scanner {
public:
    using scanner::scanner;

    // Reads a token. Throws reported_failure, after reporting, where the text has none.
    token next();
    bool number_has_sign() const noexcept { return sign_ != '\0'; }
    // Of the last number token.
    double number() const noexcept { return sign_ == '-' ? -scanner::number() : scanner::number(); }

private:
    bool starts_number() const noexcept;
    token read_token();
    token read_signed_number();

    char sign_ = '\0';  // of the last number; null: none
};

// Whether the first tokens of a text are what `begins` looks for; not where they are no tokens. Nothing is reported.
bool begins_as(std::string_view source, bool (*begins)(net_lexer&));

}  // namespace quarn
