// Sizes that saturate: a product or sum that does not fit becomes the largest size, which means "too large".
#pragma once

#include <array>
#include <cstddef>

#include "allocation.h"

namespace quarn {

constexpr std::size_t saturating_product(std::size_t a, std::size_t b) noexcept {
    std::size_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? largest_size : product;
}

constexpr std::size_t saturating_sum(std::size_t a, std::size_t b) noexcept {
    std::size_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? largest_size : sum;
}

// A size in decimal, "HUGE" for the largest.
using size_text = std::array<char, 24>;
size_text format_size(std::size_t value) noexcept;

}  // namespace quarn
