#include "text_width.h"

#include <string_view>

namespace tool {
namespace {

constexpr const char* ellipsis = "\u2026";

size_t length_of_character(const std::string& text, size_t start) {
    size_t length = 1;
    while (start + length < text.size() &&
           (static_cast<unsigned char>(text[start + length]) & 0xC0U) == 0x80U)
        ++length;
    return length;
}

// In parts of the size. The widest of the usual fonts count.
double width_of_character(std::string_view character) {
    constexpr std::string_view narrow = " ijl.,:;'|!()[]/frtI-";
    constexpr std::string_view wide = "mwMW@%";
    if (character.size() >= 3 && character != ellipsis) return 1.05;
    if (character.size() > 1) return character == ellipsis ? 1 : 0.7;
    const char c = character.front();
    if (narrow.find(c) != std::string_view::npos) return 0.4;
    if (wide.find(c) != std::string_view::npos) return 0.97;
    return c >= 'A' && c <= 'Z' ? 0.72 : 0.63;
}

}  // namespace

double drawn_width(const std::string& text, double size) {
    double width = 0;
    for (size_t i = 0, length = 0; i < text.size(); i += length) {
        length = length_of_character(text, i);
        width += width_of_character(std::string_view(text).substr(i, length));
    }
    return width * size;
}

std::string shortened(const std::string& text, double size, double width) {
    if (drawn_width(text, size) <= width) return text;
    std::string shown;
    double left = width - drawn_width(ellipsis, size);
    for (size_t i = 0, length = 0; i < text.size(); i += length) {
        length = length_of_character(text, i);
        const std::string_view character = std::string_view(text).substr(i, length);
        left -= width_of_character(character) * size;
        if (left < 0) break;
        shown += character;
    }
    return shown.erase(shown.find_last_not_of(' ') + 1) + ellipsis;
}

}  // namespace tool
