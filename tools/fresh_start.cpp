#include "fresh_start.h"

#include <map>
#include <new>

#include "tool_failure.h"

namespace tool {
namespace {

enum suitability { not_suited, by_value, by_state, by_decision };

// Observing a decision never depends on another one.
suitability suitability_of(q_node_t node) {
    const q_category_t category = q_node_get_category(node);
    if (q_node_get_kind(node) == q_kind_continuous)
        return q_node_get_variance(node) > 0 ? by_value : not_suited;
    if (q_node_get_kind(node) != q_kind_discrete || q_node_get_number_of_states(node) < 2) return not_suited;
    if (category == q_category_decision) return by_decision;
    return category == q_category_chance ? by_state : not_suited;
}

// A function that has no value leaves trees without results: these start afresh in any case.
void propagate(q_domain_t domain) {
    if (q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal) == q_error_no_memory)
        throw std::bad_alloc();
}

}  // namespace

fresh_start::fresh_start(const model& asked) : asked_(asked) {
    std::map<q_junction_tree_t, q_node_t> best;
    for (const q_node_t node : asked.nodes()) {
        const suitability suited = suitability_of(node);
        if (suited == not_suited) continue;
        const auto [chosen, is_first] = best.emplace(q_node_get_junction_tree(node), node);
        if (!is_first && suited > suitability_of(chosen->second)) chosen->second = node;
    }
    for (const auto& [tree, node] : best) {
        const bool has_states = q_node_get_kind(node) == q_kind_discrete;
        excluding_.push_back(
            {node, has_states ? most_probable_state(node) : 0, has_states ? 0 : q_node_get_mean(node)});
    }
}

void fresh_start::make() const {
    const q_domain_t domain = asked_.domain();
    q_domain_retract_findings(domain);
    for (const chosen_evidence& entered : excluding_)
        if (q_node_get_kind(entered.node) == q_kind_discrete)
            q_node_select_state(entered.node, entered.state);
        else
            q_node_enter_value(entered.node, entered.value);
    propagate(domain);
    q_domain_retract_findings(domain);
    propagate(domain);
}

}  // namespace tool
