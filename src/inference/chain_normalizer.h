// The normaliser of a chain component: what makes the product of its tables a distribution of its members given its
// parents.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Works it out from the potentials and the members' own tables, after checking these. Fails with
// q_error_invalid_probability_potential, with q_error_chain_graph when the members have no possible configuration in some
// configuration of the parents, and with q_error_size_too_large or for lack of memory.
void update_normalizer(compiled_component& updated, const workers& allowed);

// The same distribution as tables of its members, in an order in which they can be drawn: each one over parents of the
// component, members before it, and last the member itself. Rows have their largest number near 1. The order depends on the
// structure only. Leaves the members' tables as they are. Fails as update_normalizer() does.
std::vector<std::unique_ptr<table>> conditional_distributions(const chain_component& component,
                                                              const workers& allowed);

}  // namespace quarn
