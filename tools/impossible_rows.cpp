#include <span>

#include "solve.h"
#include "tool_failure.h"

namespace tool {
namespace {

// Goes through the configurations that can occur; in those that have got so far the nodes before `parents` are observed.
void find_possible(model& asked, std::span<const q_node_t> parents, size_t configuration,
                   std::vector<policy_row>& rows) {
    if (parents.empty()) {
        rows[configuration].is_possible = true;
        return;
    }
    asked.compute();
    const q_node_t parent = parents.front();
    const size_t states = q_node_get_number_of_states(parent);
    std::vector<double> beliefs, entered;
    for (size_t state = 0; state < states; ++state) {
        beliefs.push_back(q_node_get_belief(parent, state));
        entered.push_back(q_node_get_entered_finding(parent, state));
    }
    for (size_t state = 0; state < states; ++state) {
        if (beliefs[state] == 0) continue;
        q_node_select_state(parent, state);
        find_possible(asked, parents.subspan(1), configuration * states + state, rows);
    }
    for (size_t state = 0; state < states; ++state) q_node_enter_finding(parent, state, entered[state]);
}

void remove_parents(const model& asked, q_node_t child) {
    while (const q_node_t parent = *q_node_get_parents(child))
        if (q_node_remove_parent(child, parent) != q_error_none) fail_with_library_error(asked.file());
}

// Anything can be decided whatever is known, and what follows from decisions can be observed. Without links to what they
// know, and without utilities, the tables are much smaller.
void turn_decisions_into_chance(const model& asked) {
    for (const q_node_t node : asked.nodes())
        if (const q_category_t category = q_node_get_category(node);
            category == q_category_decision || category == q_category_utility)
            remove_parents(asked, node);
    set_uniform_policies(asked);
    for (const q_node_t node : asked.nodes())
        if (q_node_get_category(node) == q_category_decision &&
            q_node_set_category(node, q_category_chance) != q_error_none)
            fail_with_library_error(asked.file());
}

}  // namespace

void mark_impossible_rows(model& asked, std::vector<policy>& policies) {
    turn_decisions_into_chance(asked);
    for (policy& marked : policies) {
        if (marked.rows.empty()) continue;
        for (policy_row& row : marked.rows) row.is_possible = false;
        std::vector<q_node_t> parents;
        for (const node_beliefs& parent : marked.parents) parents.push_back(asked.node_called(parent.node));
        find_possible(asked, parents, 0, marked.rows);
    }
}

}  // namespace tool
