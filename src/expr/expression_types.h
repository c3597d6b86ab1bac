// What expressions yield, and which arguments operators take.
#pragma once

#include <span>

#include "expression.h"
#include "node.h"
#include "operators.h"

namespace quarn {

// What a reference to a node yields: the label or truth of its state by its subtype, else a number.
value_type type_of(const node& referred) noexcept;
value_type type_of(const expression& tree) noexcept;

// Fails with q_error_invalid_expression where the operator does not take these arguments.
void require_arguments(q_operator_t op, std::span<expression* const> arguments);

// Fails with q_error_invalid_expression where a model of the node cannot hold the expression: it must yield what selects a
// state of the node, or a number for one without states; a chance node also takes a distribution.
void require_suitable(const node& owner, const expression& tree);
// The same, and fails where an operator in it does not take its arguments any more: nodes may have changed their subtypes.
void require_still_suitable(const node& owner, const expression& tree);

}  // namespace quarn
