// What can be read after a propagation.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Fail with q_error_usage, q_error_not_compiled or q_error_no_equilibrium.
double belief(const node& asked, std::size_t state);
double normalization_constant(const domain& asked);
double log_normalization_constant(const domain& asked);

}  // namespace quarn
