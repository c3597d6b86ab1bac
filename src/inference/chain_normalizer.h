// The normaliser of a chain component: what makes the product of its tables a distribution of its members given its
// parents.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Works it out from the potentials and the members' own tables, after checking these. Fails with
// q_error_invalid_probability_potential, with q_error_chain_graph when the members have no possible configuration in some
// configuration of the parents, and with q_error_size_too_large or for lack of memory.
void update_normalizer(compiled_component& updated, const workers& allowed);

}  // namespace quarn
