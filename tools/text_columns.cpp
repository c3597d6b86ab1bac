#include "text_columns.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tool {

std::string format_number(double value) {
    if (std::isnan(value)) return "N/A";
    std::array<char, 32> text{};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value + 0.0, std::chars_format::general, 6);
    return {text.data(), result.ptr};
}

size_t width_of(const std::string& text) {
    return static_cast<size_t>(
        std::ranges::count_if(text, [](unsigned char c) { return (c & 0xC0U) != 0x80U; }));
}

std::string padded(std::string text, size_t width) {
    const size_t present = width_of(text);
    if (present < width) text.append(width - present, ' ');
    return text;
}

}  // namespace tool
