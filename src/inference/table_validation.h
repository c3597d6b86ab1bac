// The check of a node's table before it is used.
#pragma once

#include "node.h"

namespace quarn {

// Makes sure that the table of a node with a kind is there and holds distributions: divides each by its sum, once after
// every change. Fails with q_error_invalid_probability_potential, the table being left as it was.
void validate_distributions(node& owner);

// Makes sure that a table that the members of a chain component share is there and holds finite numbers, none negative.
// Fails with the same code.
void validate_potential(table& shared);

// Makes sure that the table of a utility is there and holds finite numbers. Fails with the same code.
void validate_utilities(node& owner);

}  // namespace quarn
