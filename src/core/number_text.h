// Numbers as text, the same in every locale.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace quarn {

// A number as printf writes it by "%.8G" or, with another number of digits, "%.*G" in the "C" locale.
class number_text {
public:
    explicit number_text(double number, int digits = 8) noexcept;
    std::string_view view() const noexcept { return {characters_.data(), length_}; }

    // The same, but the largest finite doubles and what lies beyond are `infinity` and `-infinity`.
    static number_text with_infinities(double number) noexcept;

private:
    explicit number_text(std::string_view text) noexcept;

    std::array<char, 24> characters_;
    std::size_t length_;
};

}  // namespace quarn
