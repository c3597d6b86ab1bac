// The innermost loops of the operations on tables. They take pointers, counts and strides, allocate nothing and cannot
// fail; a source stride of 0 means one number for the whole run.
#pragma once

#include <cstddef>

namespace quarn {

// target[i] *= source[i]
void multiply_run(double* target, std::size_t stride, const double* source, std::size_t source_stride,
                  std::size_t count) noexcept;
// result[i] += source[i]
void add_run(double* result, std::size_t result_stride, const double* source, std::size_t stride,
             std::size_t count) noexcept;

double sum_of(const double* numbers, std::size_t count) noexcept;
void scale(double* numbers, std::size_t count, double factor) noexcept;
// next[i] / last[i] where last[i] is positive, else 0, into last. Returns the sum.
double ratio(double* last, const double* next, std::size_t count) noexcept;

// The extremes of numbers none of which is negative: the largest (0 when all are zero), and the smallest that is
// positive (infinite when none is).
struct magnitudes {
    double smallest_positive;
    double largest;
};
magnitudes magnitudes_of(const double* numbers, std::size_t count) noexcept;

}  // namespace quarn
