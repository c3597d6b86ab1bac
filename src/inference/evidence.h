// Evidence as the caller enters it on nodes, and what of it the junction trees have taken in.
//
// What is entered on a node is entered on the node linked to it too, and so on down the chain. Linked nodes have equally
// many states.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Fails with q_error_usage unless the node is discrete and has the state.
void require_state(const node& observed, std::size_t state);

// Fail with q_error_usage: a node of another kind, a state out of range, a weight that is none, or (findings and states
// only) a domain that is part of something else.
void enter_finding(node& observed, std::size_t state, double weight);
void select_state(node& observed, std::size_t state);
void enter_value(node& observed, double value);
void retract_findings(node& observed);
void retract_all_findings(domain& observed) noexcept;

inline bool evidence_is_entered(const node& asked) noexcept {
    return asked.evidence.index != findings::none || asked.value_is_entered;
}
inline bool evidence_is_propagated(const compiled_node& asked) noexcept {
    return asked.propagated_index != findings::none || asked.value_is_propagated;
}

// Fails with q_error_not_compiled.
const junction_forest& required_forest(const domain& compiled);
// The compiled counterpart of a node with a kind, or of the first node linked to it, when its results can be read. Fails
// with q_error_usage, q_error_not_compiled or q_error_no_equilibrium.
const compiled_node& propagated_node(const node& asked);
// What findings are propagated there: none on a continuous node. Fails likewise.
findings_view propagated_findings(const node& asked);

// Whether entered evidence differs from what the tree holds; for nodes with a kind in a compiled domain.
bool has_evidence_to_propagate(const node& asked) noexcept;

// The nodes of a tree, excluded ones that belong to it among them, with such evidence.
std::size_t changed_evidence(const junction_forest& forest, const junction_tree& tree) noexcept;
// A tree at an equilibrium keeps their number, which entering evidence adjusts. To be called whenever it gets an
// equilibrium or what is propagated changes.
void count_changed_evidence(junction_forest& forest, junction_tree& tree) noexcept;
// Brings the flags of a tree in line with what is propagated.
void update_evidence_flags(junction_forest& forest, junction_tree& tree) noexcept;

// Fails with q_error_invalid_evidence unless a state is selected on each excluded node.
void require_excluded_are_instantiated(const domain& propagated);

}  // namespace quarn
