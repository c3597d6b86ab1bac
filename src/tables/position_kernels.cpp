#include "position_kernels.h"

#include <algorithm>

namespace quarn {

template <class Position>
void multiply(std::span<const Position> positions, double* larger, const double* smaller) noexcept {
    for (std::size_t i = 0; i < positions.size(); ++i) larger[i] *= smaller[positions[i]];
}

template <class Position>
void add(std::span<const Position> positions, double* larger, const double* smaller) noexcept {
    for (std::size_t i = 0; i < positions.size(); ++i) larger[i] += smaller[positions[i]];
}

// Each quarter in its turn, as an addition has to wait for the one before when that went to the same position.
template <class Position>
void sum_marginal(std::span<const Position> positions, const double* larger, double* smaller,
                  std::size_t smaller_size) noexcept {
    std::fill_n(smaller, smaller_size, 0.0);
    const std::size_t quarter = positions.size() / 4;
    for (std::size_t i = 0; i < quarter; ++i)
        for (std::size_t at = i; at < 4 * quarter; at += quarter) smaller[positions[at]] += larger[at];
    for (std::size_t i = 4 * quarter; i < positions.size(); ++i) smaller[positions[i]] += larger[i];
}

// Backwards first, so that the earliest entry is what the others are compared with.
template <class Position>
void max_marginal(std::span<const Position> positions, const double* larger, double* smaller,
                  std::size_t smaller_size) noexcept {
    std::fill_n(smaller, smaller_size, 0.0);
    for (std::size_t i = positions.size(); i-- > 0;) smaller[positions[i]] = larger[i];
    for (std::size_t i = 0; i < positions.size(); ++i)
        if (larger[i] > smaller[positions[i]]) smaller[positions[i]] = larger[i];
}

#define QUARN_POSITION_KERNELS(Position)                                                                     \
    template void multiply(std::span<const Position>, double*, const double*) noexcept;                      \
    template void add(std::span<const Position>, double*, const double*) noexcept;                           \
    template void sum_marginal(std::span<const Position>, const double*, double*, std::size_t) noexcept;     \
    template void max_marginal(std::span<const Position>, const double*, double*, std::size_t) noexcept;
QUARN_POSITION_KERNELS(uint8_t)
QUARN_POSITION_KERNELS(uint16_t)
QUARN_POSITION_KERNELS(uint32_t)

}  // namespace quarn
