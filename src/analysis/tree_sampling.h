// Sampling of a compiled domain: the cliques of each junction tree from the root outward, each given what was drawn before
// [Dawid 1992].
#pragma once

#include <memory>

#include "junction_forest.h"
#include "sampler.h"

namespace quarn {

// For as long as the forest has the same tables. Its draws fail with q_error_inconsistency_or_underflow.
std::unique_ptr<sampler> new_tree_sampler(junction_forest& forest);

}  // namespace quarn
