#include "beliefs.h"

#include "tool_failure.h"

namespace tool {
namespace {

void collect_evidence(q_node_t node, node_beliefs& collected) {
    if (!q_node_evidence_is_entered(node)) return;
    if (const int64_t state = q_node_get_selected_state(node); state >= 0) {
        collected.observed = collected.states[static_cast<size_t>(state)];
        return;
    }
    for (size_t state = 0; state < collected.states.size(); ++state)
        collected.weights.push_back(q_node_get_entered_finding(node, state));
}

node_beliefs collect_node(q_node_t node) {
    node_beliefs collected{q_node_get_name(node), q_node_get_label(node), state_names(node), {}, {}, {}, {}};
    for (size_t state = 0; state < collected.states.size(); ++state) {
        collected.labels.emplace_back(q_node_get_state_label(node, state));
        collected.beliefs.push_back(q_node_get_belief(node, state));
    }
    collect_evidence(node, collected);
    return collected;
}

}  // namespace

model_beliefs collect_beliefs(const model& propagated) {
    model_beliefs collected{propagated.file(),
                            q_domain_get_log_normalization_constant(propagated.domain()),
                            q_domain_get_normalization_constant(propagated.domain()),
                            {}};
    if (q_error_code() != q_error_none) fail_with_library_error(propagated.file());
    for (const q_node_t node : propagated.nodes()) collected.nodes.push_back(collect_node(node));
    return collected;
}

}  // namespace tool
