#include "number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <span>

namespace quarn {

number_text::number_text(double number, int digits) noexcept {
    char* const first = characters_.data();
    const std::to_chars_result written =
        std::to_chars(first, first + characters_.size(), number, std::chars_format::general, digits);
    length_ = static_cast<std::size_t>(written.ptr - first);
    for (char& c : std::span(first, length_))
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
}

number_text::number_text(std::string_view text) noexcept : length_(text.size()) {
    std::ranges::copy(text, characters_.begin());
}

number_text number_text::with_infinities(double number) noexcept {
    constexpr double largest = std::numeric_limits<double>::max();
    if (number >= largest) return number_text("infinity");
    if (number <= -largest) return number_text("-infinity");
    return number_text(number);
}

}  // namespace quarn
