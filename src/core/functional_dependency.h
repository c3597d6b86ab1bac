// Function nodes compute values from beliefs: tests that no belief then depends on such a value of itself, and no
// decision problem on any.
#pragma once

#include <span>

#include "node.h"

namespace quarn {

// For a link from parent to child; a link from `replaced` to child counts as absent (when a parent is switched).
// Fails with q_error_cyclic_functional_dependency or q_error_functional_dependency.
void require_no_functional_dependency(node& parent, node& child, const node* replaced = nullptr);

// For discrete nodes whose beliefs come to depend on each other all at once, as those of a chain component and its parents.
// Fails with q_error_cyclic_functional_dependency.
void require_joinable_beliefs(std::span<node* const> joined);

// For a domain that is to get its first decision or utility: whether any function node with a discrete or continuous
// parent has a node with a kind among itself and its descendants.
bool functions_influence_variables(domain& tested);

}  // namespace quarn
