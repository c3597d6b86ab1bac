#include "api_frame.h"
#include "evidence.h"
#include "propagation_state.h"

using namespace quarn;

q_status_t q_node_enter_finding(q_node_t node, size_t state, q_number_t value) {
    return api_status({node}, [&] { enter_finding(*node, state, value); });
}

q_status_t q_node_select_state(q_node_t node, size_t state) {
    return api_status({node}, [&] { select_state(*node, state); });
}

q_status_t q_node_enter_value(q_node_t node, q_number_t value) {
    return api_status({node}, [&] { enter_value(*node, value); });
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
        return propagated_findings(*node).weight(state);
    });
}

q_number_t q_node_get_entered_value(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] {
        require(node->is_continuous());
        require(node->value_is_entered, q_error_no_value);
        return node->entered_value;
    });
}

q_number_t q_node_get_propagated_value(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] {
        require(node->is_continuous());
        const compiled_node& source = propagated_node(*node);
        require(source.value_is_propagated, q_error_no_value);
        return source.propagated_value;
    });
}

int64_t q_node_get_selected_state(q_node_t node) {
    return api_call<int64_t>(-1, {node}, [&] {
        require(node->is_discrete());
        return node->evidence.index;
    });
}

int64_t q_node_get_propagated_state(q_node_t node) {
    return api_call<int64_t>(-1, {node}, [&] {
        require(node->is_discrete());
        return propagated_findings(*node).index;
    });
}

q_boolean_t q_node_evidence_is_entered(q_node_t node) {
    return api_predicate({node}, [&] {
        require(node->has_kind());
        return evidence_is_entered(*node);
    });
}

q_boolean_t q_node_evidence_is_propagated(q_node_t node) {
    return api_predicate({node}, [&] { return evidence_is_propagated(propagated_node(*node)); });
}

q_boolean_t q_node_evidence_to_propagate(q_node_t node) {
    return api_predicate({node}, [&] {
        require(node->has_kind() && forest_of(*node->domain) != nullptr);
        return has_evidence_to_propagate(*node);
    });
}

q_boolean_t q_node_likelihood_is_entered(q_node_t node) {
    return api_predicate({node}, [&] {
        require(node->has_kind());
        return node->evidence.is_likelihood();
    });
}

q_boolean_t q_node_likelihood_is_propagated(q_node_t node) {
    return api_predicate({node}, [&] { return propagated_findings(*node).is_likelihood(); });
}

q_boolean_t q_domain_evidence_to_propagate(q_domain_t domain) {
    return api_predicate({domain}, [&] { return has_evidence_to_propagate(*domain); });
}

q_boolean_t q_junction_tree_evidence_to_propagate(q_junction_tree_t tree) {
    return api_predicate({tree}, [&] { return has_evidence_to_propagate(*tree); });
}

q_boolean_t q_domain_evidence_is_propagated(q_domain_t domain) {
    return api_predicate({domain},
                         [&] { return any_tree_has(*domain, &junction_tree::evidence_is_propagated); });
}

q_boolean_t q_junction_tree_evidence_is_propagated(q_junction_tree_t tree) {
    return api_predicate({tree}, [&] { return tree_has(*tree, &junction_tree::evidence_is_propagated); });
}

q_boolean_t q_domain_likelihood_is_propagated(q_domain_t domain) {
    return api_predicate({domain},
                         [&] { return any_tree_has(*domain, &junction_tree::likelihood_is_propagated); });
}

q_boolean_t q_junction_tree_likelihood_is_propagated(q_junction_tree_t tree) {
    return api_predicate({tree}, [&] { return tree_has(*tree, &junction_tree::likelihood_is_propagated); });
}

q_boolean_t q_domain_cg_evidence_is_propagated(q_domain_t domain) {
    return api_predicate({domain},
                         [&] { return any_tree_has(*domain, &junction_tree::cg_evidence_is_propagated); });
}

q_boolean_t q_junction_tree_cg_evidence_is_propagated(q_junction_tree_t tree) {
    return api_predicate({tree}, [&] { return tree_has(*tree, &junction_tree::cg_evidence_is_propagated); });
}

q_boolean_t q_domain_equilibrium_is(q_domain_t domain, q_equilibrium_t equilibrium) {
    return api_predicate({domain}, [&] { return equilibrium_is(*domain, equilibrium); });
}

q_boolean_t q_junction_tree_equilibrium_is(q_junction_tree_t tree, q_equilibrium_t equilibrium) {
    return api_predicate({tree}, [&] { return equilibrium_is(*tree, equilibrium); });
}

q_boolean_t q_domain_evidence_mode_is(q_domain_t domain, q_mode_t mode) {
    return api_predicate({domain}, [&] { return evidence_mode_is(*domain, mode); });
}

q_boolean_t q_junction_tree_evidence_mode_is(q_junction_tree_t tree, q_mode_t mode) {
    return api_predicate({tree}, [&] { return evidence_mode_is(*tree, mode); });
}
