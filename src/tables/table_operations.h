// Operations between a table and a smaller one over some of its nodes, by a loop plan made for the pair.
#pragma once

#include "loop_plan.h"

namespace quarn {

// Multiplies every entry of the larger table by the entry of the smaller one that belongs to it.
void multiply(const loop_plan& plan, double* larger, const double* smaller) noexcept;

// Sums the larger table over the nodes that the smaller one does not have, into the smaller one; `smaller_size` is
// its number of entries.
void sum_marginal(const loop_plan& plan, const double* larger, double* smaller,
                  std::size_t smaller_size) noexcept;

}  // namespace quarn
