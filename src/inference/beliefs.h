// Beliefs, moments and expected utilities, worked out from the tables of a tree at the end of a propagation.
#pragma once

#include "scaling.h"

namespace quarn {

// Fails with q_error_normalization when a belief has underflowed.
void update_results(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode);

}  // namespace quarn
