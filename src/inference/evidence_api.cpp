#include "api_frame.h"
#include "evidence.h"

using namespace quarn;

q_status_t q_node_enter_finding(q_node_t node, size_t state, q_number_t value) {
    return api_status({node}, [&] { enter_finding(*node, state, value); });
}

q_status_t q_node_select_state(q_node_t node, size_t state) {
    return api_status({node}, [&] { select_state(*node, state); });
}

q_status_t q_node_retract_findings(q_node_t node) {
    return api_status({node}, [&] { retract_findings(*node); });
}

q_status_t q_domain_retract_findings(q_domain_t domain) {
    return api_status({domain}, [&] { retract_all_findings(*domain); });
}

q_number_t q_node_get_entered_finding(q_node_t node, size_t state) {
    return api_call<q_number_t>(-1.0, {node}, [&] {
        require_state(*node, state);
        return node->evidence.weight(state);
    });
}

q_number_t q_node_get_propagated_finding(q_node_t node, size_t state) {
    return api_call<q_number_t>(-1.0, {node}, [&] {
        require_state(*node, state);
        return propagated_node(*node).propagated.weight(state);
    });
}

int64_t q_node_get_selected_state(q_node_t node) {
    return api_call<int64_t>(-1, {node}, [&] {
        require(node->is_discrete());
        return node->evidence.index;
    });
}

int64_t q_node_get_propagated_state(q_node_t node) {
    return api_call<int64_t>(-1, {node}, [&] { return propagated_node(*node).propagated.index; });
}

q_boolean_t q_node_evidence_is_entered(q_node_t node) {
    return api_predicate({node}, [&] {
        require(node->has_kind());
        return node->evidence.index != findings::none;
    });
}

q_boolean_t q_node_evidence_is_propagated(q_node_t node) {
    return api_predicate({node}, [&] { return propagated_node(*node).propagated.index != findings::none; });
}

q_boolean_t q_node_evidence_to_propagate(q_node_t node) {
    return api_predicate({node}, [&] {
        const junction_forest* forest = forest_of(*node->domain);
        require(forest != nullptr && node->has_kind());
        return has_evidence_to_propagate(forest->of(*node));
    });
}

q_boolean_t q_node_likelihood_is_entered(q_node_t node) {
    return api_predicate({node}, [&] {
        require(node->has_kind());
        return node->evidence.is_likelihood();
    });
}

q_boolean_t q_domain_evidence_to_propagate(q_domain_t domain) {
    return api_predicate({domain}, [&] { return has_evidence_to_propagate(*domain); });
}

q_boolean_t q_domain_evidence_is_propagated(q_domain_t domain) {
    return api_predicate({domain}, [&] { return evidence_is_propagated(*domain); });
}
