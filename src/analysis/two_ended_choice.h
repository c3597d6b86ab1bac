// Choosing among weights, each by its share of their total, with a walk that begins at either end: a uniform number tells
// how far it goes, up to half of the total, a second one at which end it begins. That makes it half as long.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "loop_levels.h"
#include "random_generator.h"

namespace quarn {

// What one of these walks goes through: the positions of weights, in their order or backwards. All return a position, and
// fail with q_error_inconsistency_or_underflow where the weights add up to less than half of the total, or to 0.
std::size_t choose(std::span<const double> weights, double total, random_generator& generator);
std::size_t choose_listed(const double* weights, std::span<const uint32_t> positions, double total,
                          random_generator& generator);
// Those that the loops reach from the first weight on in the larger table; levels have more than one step.
std::size_t choose_in_loops(const double* weights, std::span<const loop_level> levels, double total,
                            random_generator& generator);

}  // namespace quarn
