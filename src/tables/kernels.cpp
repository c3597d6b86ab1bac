#include "kernels.h"

#include <limits>

namespace quarn {

void multiply_run(double* target, std::size_t stride, const double* source, std::size_t source_stride,
                  std::size_t count) noexcept {
    if (source_stride == 0) {
        const double factor = *source;
        if (stride == 1)
            for (std::size_t i = 0; i < count; ++i) target[i] *= factor;
        else
            for (std::size_t i = 0; i < count; ++i) target[i * stride] *= factor;
    } else if (stride == 1 && source_stride == 1) {
        for (std::size_t i = 0; i < count; ++i) target[i] *= source[i];
    } else {
        for (std::size_t i = 0; i < count; ++i) target[i * stride] *= source[i * source_stride];
    }
}

void add_run(double* result, std::size_t result_stride, const double* source, std::size_t stride,
             std::size_t count) noexcept {
    if (result_stride == 0) {
        double sum = 0;
        for (std::size_t i = 0; i < count; ++i) sum += source[i * stride];
        *result += sum;
    } else if (stride == 1 && result_stride == 1) {
        for (std::size_t i = 0; i < count; ++i) result[i] += source[i];
    } else {
        for (std::size_t i = 0; i < count; ++i) result[i * result_stride] += source[i * stride];
    }
}

double sum_of(const double* numbers, std::size_t count) noexcept {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += numbers[i];
    return sum;
}

void scale(double* numbers, std::size_t count, double factor) noexcept {
    for (std::size_t i = 0; i < count; ++i) numbers[i] *= factor;
}

double ratio(double* last, const double* next, std::size_t count) noexcept {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        last[i] = last[i] > 0 ? next[i] / last[i] : 0;
        sum += last[i];
    }
    return sum;
}

magnitudes magnitudes_of(const double* numbers, std::size_t count) noexcept {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    magnitudes found{infinite, 0};
    for (std::size_t i = 0; i < count; ++i) {
        const double positive = numbers[i] > 0 ? numbers[i] : infinite;
        found.smallest_positive = positive < found.smallest_positive ? positive : found.smallest_positive;
        found.largest = numbers[i] > found.largest ? numbers[i] : found.largest;
    }
    return found;
}

}  // namespace quarn
