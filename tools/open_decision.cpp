#include "open_decision.h"

#include <set>

namespace tool {
namespace {

// A node with evidence that the decision influences by way of chance nodes; null when there is none.
q_node_t find_influenced_evidence(q_node_t decision) {
    std::vector<q_node_t> influencing = {decision};
    std::set<q_node_t> met;
    while (!influencing.empty()) {
        const q_node_t* child = q_node_get_children(influencing.back());
        influencing.pop_back();
        for (; *child != nullptr; ++child) {
            if (q_node_get_category(*child) != q_category_chance || !met.insert(*child).second) continue;
            if (q_node_evidence_is_entered(*child) == 1) return *child;
            influencing.push_back(*child);
        }
    }
    return nullptr;
}

std::string find_fault(q_node_t decision) {
    const std::string name = q_node_get_name(decision);
    const int64_t state = q_node_get_selected_state(decision);
    if (state == -2) return "node " + name + " is a decision: its evidence is a state, not a likelihood";
    const q_node_t influenced = state == -1 && q_node_get_number_of_states(decision) > 1
                                    ? find_influenced_evidence(decision)
                                    : nullptr;
    if (influenced == nullptr) return "";
    return std::string("what is observed of node ") + q_node_get_name(influenced) +
           " can depend on decision " + name + ", which is open: tell its state as well";
}

}  // namespace

std::string find_open_decision(const std::vector<q_node_t>& nodes) {
    for (const q_node_t node : nodes) {
        if (q_node_get_category(node) != q_category_decision) continue;
        if (std::string found = find_fault(node); !found.empty()) return found;
    }
    return "";
}

}  // namespace tool
