// Evidence as the caller enters it on nodes, and what of it the junction trees have taken in.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Fails with q_error_usage unless the node is discrete and has the state.
void require_state(const node& observed, std::size_t state);

// Fail with q_error_usage for a node that is not discrete, a state out of range, or a weight that is none.
void enter_finding(node& observed, std::size_t state, double weight);
void select_state(node& observed, std::size_t state);
void retract_findings(node& observed);
void retract_all_findings(domain& observed);

// The compiled counterpart of a discrete node whose results can be read. Fails with q_error_usage,
// q_error_not_compiled or q_error_no_equilibrium.
const compiled_node& propagated_node(const node& asked);

// Whether entered evidence differs from what the trees hold; a domain that is not compiled is q_error_not_compiled.
bool has_evidence_to_propagate(const compiled_node& asked) noexcept;
bool has_evidence_to_propagate(const domain& asked);
bool evidence_is_propagated(const domain& asked);

}  // namespace quarn
