#include "terminal.h"

#include <algorithm>
#include <cstdio>

#include "emphasis.h"

namespace tool {
namespace {

struct byte_range {
    unsigned char first;
    unsigned char last;

    bool holds(char byte) const noexcept {
        return static_cast<unsigned char>(byte) >= first && static_cast<unsigned char>(byte) <= last;
    }
};

// What may follow the first byte of a character of two bytes and more: neither longer forms than needed, nor halves of
// surrogate pairs, nor what lies beyond Unicode, nor the control characters from U+0080 on.
byte_range second_byte(unsigned char first) {
    switch (first) {
    case 0xC2: return {0xA0, 0xBF};
    case 0xE0: return {0xA0, 0xBF};
    case 0xED: return {0x80, 0x9F};
    case 0xF0: return {0x90, 0xBF};
    case 0xF4: return {0x80, 0x8F};
    default: return {0x80, 0xBF};
    }
}

// The characters from U+202A to U+202E and from U+2066 to U+2069, which turn round what follows them in the line.
bool sets_direction(std::string_view character) {
    return (character >= "\u202A" && character <= "\u202E") ||
           (character >= "\u2066" && character <= "\u2069");
}

// The bytes of the character that a text begins with; 0 if that is none to be printed.
size_t printable_length(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return first >= ' ' && first != 0x7F ? 1 : 0;
    if (first < 0xC2 || first > 0xF4) return 0;
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (text.size() < length || !second_byte(first).holds(text[1])) return 0;
    const auto is_continuation = [](char byte) { return byte_range{0x80, 0xBF}.holds(byte); };
    const std::string_view character = text.substr(0, length);
    return std::ranges::all_of(character.substr(2), is_continuation) && !sets_direction(character) ? length
                                                                                                   : 0;
}

std::string in_hexadecimal(char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value / 16], digits[value % 16]};
}

}  // namespace

std::string visible(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const size_t length = printable_length(text);
        if (length == 0) shown += in_hexadecimal(text.front());
        shown += text.substr(0, length);
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return shown;
}

std::string visible_line(std::string_view text) { return visible(text) + "\n"; }

void report(std::string_view line) {
    const size_t subject = line.find(": ");
    std::string text;
    if (subject != std::string_view::npos) {
        const std::string shown = visible(line.substr(0, subject + 1));
        text = shown == "quarn:" ? in_red(shown, stderr) : in_bold(shown, stderr);
        line.remove_prefix(subject + 1);
    }
    std::fputs((text + visible_line(line)).c_str(), stderr);
}

}  // namespace tool
