#include "kernels.h"

#include <limits>

namespace quarn {

double sum_of(const double* numbers, std::size_t count) noexcept {
    constexpr std::size_t lanes = 16;  // as each addition has to wait for the one before
    double lane[lanes] = {};
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        for (std::size_t l = 0; l < lanes; ++l) lane[l] += numbers[i + l];
    for (std::size_t width = lanes / 2; width > 0; width /= 2)
        for (std::size_t l = 0; l < width; ++l) lane[l] += lane[l + width];
    for (; i < count; ++i) lane[0] += numbers[i];
    return lane[0];
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

void divide_by_weights(double* sums, const double* weights, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) sums[i] = weights[i] == 0 ? 0 : sums[i] / weights[i];
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
