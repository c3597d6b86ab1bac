// Loops over the numbers of one table, or of two of the same shape. They allocate nothing and cannot fail.
#pragma once

#include <cstddef>

namespace quarn {

double sum_of(const double* numbers, std::size_t count) noexcept;
void scale(double* numbers, std::size_t count, double factor) noexcept;
// next[i] / last[i] where last[i] is positive, else 0, into last. Returns the sum.
double ratio(double* last, const double* next, std::size_t count) noexcept;

// Divides sums of products by the sums of their weights; a weight of 0 gives 0.
void divide_by_weights(double* sums, const double* weights, std::size_t count) noexcept;

// The extremes of numbers none of which is negative: the largest (0 when all are zero), and the smallest that is
// positive (infinite when none is).
struct magnitudes {
    double smallest_positive;
    double largest;
};
magnitudes magnitudes_of(const double* numbers, std::size_t count) noexcept;

}  // namespace quarn
