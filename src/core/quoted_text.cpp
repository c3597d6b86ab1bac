#include "quoted_text.h"

namespace quarn {
namespace {

constexpr std::string_view escaped = "\t\n\r\"\\";
constexpr std::string_view escapes = "tnr\"\\";

constexpr bool is_printable(char c) noexcept { return c >= ' ' && c <= '~'; }
constexpr bool is_octal_digit(char c) noexcept { return c >= '0' && c <= '7'; }

// As short as it may be: a digit that follows would be read as part of it.
void append_octal(std::string& to, unsigned char code, bool before_digit) {
    const auto digit = [&](unsigned shift) { return static_cast<char>('0' + (code >> shift) % 8); };
    to += '\\';
    if (before_digit || code >= 64) to += digit(6);
    if (before_digit || code >= 8) to += digit(3);
    to += digit(0);
}

}  // namespace

void append_quoted(std::string& to, std::string_view text) {
    to += '"';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (const std::size_t known = escaped.find(c); known != std::string_view::npos) {
            to += '\\';
            to += escapes[known];
        } else if (is_printable(c)) {
            to += c;
        } else {
            append_octal(to, static_cast<unsigned char>(c),
                         i + 1 < text.size() && is_octal_digit(text[i + 1]));
        }
    }
    to += '"';
}

}  // namespace quarn
