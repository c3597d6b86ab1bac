// One configuration of all nodes at a time.
#pragma once

#include "domain.h"

namespace quarn {

// Draws a configuration of the nodes with a kind, and works out utilities and functions. Where it fails there is none, and
// the generator stays where it was. Fails with q_error_usage, q_error_no_equilibrium, with q_error_computation_failed when a
// value is not finite, and as the samplers do.
void simulate(domain& sampled);

}  // namespace quarn
