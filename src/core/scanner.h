// Reads a text in which NET text and expressions may take turns: what their tokens have in common.
//
//   name         letter or '_', then letters, digits and '_'
//   dotted name  names joined by '.'
//   number       decimal, unsigned: digits with an optional point, optional exponent
//   string       between double quotes, with the escapes of C
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

class scanner {
public:
    // The source and the reports must outlive the scanner.
    scanner(std::string_view source, position_unit unit, parse_reports& reports) noexcept
        : source_(source), unit_(unit), reports_(&reports) {}
    scanner(const scanner&) = delete;
    scanner& operator=(const scanner&) = delete;

    // Of the last name or string. A string may hold null characters.
    const std::string& text() const noexcept { return text_; }
    // Of the last number.
    double number() const noexcept { return number_; }

    // The character with which the next token begins; a null one at the end. Reads nothing.
    char upcoming() const noexcept;

    // How far the text has been read.
    std::size_t position() const noexcept { return unit_ == position_unit::line ? line_ : place_; }
    [[gnu::format(printf, 2, 3)]] void report(const char* format, ...);
    // Reports an error, then throws reported_failure.
    [[noreturn, gnu::format(printf, 2, 3)]] void fail(const char* format, ...);

    // For lexers. A character to come, a null one behind the end; the next one is read by advance().
    char ahead(std::size_t distance = 0) const noexcept {
        return distance < source_.size() - place_ ? source_[place_ + distance] : '\0';
    }
    void advance() noexcept { ++place_; }
    // Skips blanks, comments and null characters; false at the end of the text.
    bool skip_blanks();
    // What stands next must be of that sort: a name begins with a letter, a number with a digit or point, a string with
    // a quote. They fail, after reporting, where the text has no such token.
    token read_name();
    token read_number();
    token read_string();

private:
    bool at_end() const noexcept { return place_ == source_.size(); }
    std::size_t place_of_token() const noexcept;
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
};

}  // namespace quarn
