#include "scanner.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "names.h"

namespace quarn {
namespace {

constexpr unsigned no_digit = 16;

constexpr bool is_blank(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

unsigned digit_value(char c) noexcept {
    if (is_digit(c)) return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
    return no_digit;
}

// Whether a number that no double can represent is too large rather than too small: whether its first significant
// digit stands before the point, once the exponent has been applied.
bool is_overflow(std::string_view literal) noexcept {
    const std::size_t exponent_mark = std::min(literal.find_first_of("eE"), literal.size());
    const std::string_view digits = literal.substr(0, exponent_mark);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t significant = digits.find_first_of("123456789");

    std::string_view exponent = literal.substr(exponent_mark);
    if (!exponent.empty())
        exponent.remove_prefix(exponent.starts_with("e+") || exponent.starts_with("E+") ? 2 : 1);
    long long shift = 0;
    if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), shift).ec ==
        std::errc::result_out_of_range)
        return exponent.front() != '-';
    return shift > static_cast<long long>(significant) - static_cast<long long>(point);
}

}  // namespace

void scanner::report(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    reports_->report(position(), format, arguments);
    va_end(arguments);
}

void scanner::fail(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    reports_->report(position(), format, arguments);
    va_end(arguments);
    throw reported_failure(q_error_parse);
}

char scanner::upcoming() const noexcept {
    const std::size_t place = place_of_token();
    return place < source_.size() ? source_[place] : '\0';
}

std::size_t scanner::place_of_token() const noexcept {
    std::size_t place = place_;
    for (bool in_comment = false; place < source_.size(); ++place) {
        const char c = source_[place];
        if (c == '\n')
            in_comment = false;
        else if (c == '%')
            in_comment = true;
        else if (!in_comment && !is_blank(c) && c != '\0')
            break;
    }
    return place;
}

bool scanner::skip_blanks() {
    for (const std::size_t end = place_of_token(); place_ < end; ++place_) {
        if (source_[place_] == '\n') ++line_;
        if (source_[place_] == '\0') report("warning: null character ignored");
    }
    return !at_end();
}

token scanner::read_name() {
    const std::size_t start = place_;
    const auto belongs = [](char c) { return is_letter(c) || is_digit(c) || c == '.'; };
    while (!at_end() && belongs(source_[place_])) ++place_;
    text_ = source_.substr(start, place_ - start);
    if (text_.find('.') == std::string::npos) return token_name;
    if (!is_compound_name(text_)) fail("`.' must be followed by a letter or an `_'");
    return token_dotted_name;
}

token scanner::read_number() {
    const char* const first = source_.data() + place_;
    const auto [last, problem] = std::from_chars(first, source_.data() + source_.size(), number_);
    if (problem == std::errc::invalid_argument) {  // a point without digits
        ++place_;
        return token_error;
    }
    if (problem == std::errc::result_out_of_range)
        number_ = is_overflow({first, last}) ? std::numeric_limits<double>::infinity() : 0.0;
    place_ = static_cast<std::size_t>(last - source_.data());
    return token_number;
}

token scanner::read_string() {
    text_.clear();
    for (++place_;;) {
        if (at_end() || source_[place_] == '\n') fail("string did not end");
        const char c = source_[place_++];
        if (c == '"') return token_string;
        if (c == '\\')
            read_escape();
        else
            append(c);
    }
}

void scanner::read_escape() {
    constexpr std::string_view letters = "\"'?\\abfnrtv";
    constexpr std::string_view characters = "\"'?\\\a\b\f\n\r\t\v";
    if (at_end()) return;
    const char escape = source_[place_];
    if (digit_value(escape) < 8) return append_code(escape, 8, 3);
    ++place_;
    if (escape == 'x') return append_code(escape, 16, source_.size());
    if (escape == '\n') {
        ++line_;
        return;
    }
    const std::size_t known = letters.find(escape);
    if (known == std::string_view::npos) fail("illegal escape sequence: `\\%c'", escape);
    append(characters[known]);
}

void scanner::append_code(char escape, unsigned base, std::size_t most_digits) {
    constexpr unsigned too_large = 256;
    const std::size_t start = place_;
    unsigned code = 0;
    for (; !at_end() && place_ - start < most_digits && digit_value(source_[place_]) < base; ++place_)
        code = std::min(code * base + digit_value(source_[place_]), too_large);
    if (place_ == start || code == too_large) fail("illegal escape sequence: `\\%c'", escape);
    append(static_cast<char>(static_cast<unsigned char>(code)));
}

void scanner::append(char c) {
    if (c == '\0') report("warning: null character in string");
    text_.push_back(c);
}

}  // namespace quarn
