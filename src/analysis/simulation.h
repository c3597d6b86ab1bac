// One configuration of all nodes at a time.
#pragma once

#include "domain.h"

namespace quarn {

// Draws a configuration of the nodes with a kind. Where it fails there is none, and the generator stays where it was. Fails
// with q_error_usage or q_error_no_equilibrium, and as the samplers do.
void simulate(domain& sampled);

}  // namespace quarn
