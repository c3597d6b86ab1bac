// Sampling of a domain that is not compiled: each node given its parents, from the tables of the nodes [Henrion 1988].
#pragma once

#include <memory>

#include "sampler.h"

namespace quarn {

// Goes through the nodes in creation order, the parents of each one first; the members of a chain component together. Fails
// as conditional_distributions() does. Its draws fail also with q_error_invalid_probability_potential, and with q_error_usage
// where evidence is entered on anything but decisions that are made; these keep their states.
std::unique_ptr<sampler> new_forward_sampler(domain& sampled);

}  // namespace quarn
