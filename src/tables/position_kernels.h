// The loops of the operations between a table of which only some entries are kept and a smaller one: for each kept entry
// there is the position of the one that belongs to it. They allocate nothing and cannot fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quarn {

// As the operations of the same names on loop plans.
template <class Position>
void multiply(std::span<const Position> positions, double* larger, const double* smaller) noexcept;
template <class Position>
void add(std::span<const Position> positions, double* larger, const double* smaller) noexcept;
template <class Position>
void sum_marginal(std::span<const Position> positions, const double* larger, double* smaller,
                  std::size_t smaller_size) noexcept;
template <class Position>
void max_marginal(std::span<const Position> positions, const double* larger, double* smaller,
                  std::size_t smaller_size) noexcept;

}  // namespace quarn
