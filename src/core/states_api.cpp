#include "api_frame.h"
#include "states.h"

using namespace quarn;

q_subtype_t q_node_get_subtype(q_node_t node) {
    return api_call<q_subtype_t>(-1, {node}, [&] {
        require(node->is_discrete());
        return node->subtype;
    });
}

q_status_t q_node_set_subtype(q_node_t node, q_subtype_t subtype) {
    return api_status({node}, [&] { set_subtype(*node, subtype); });
}

q_status_t q_node_set_number_of_states(q_node_t node, size_t count) {
    return api_status({node}, [&] { set_state_count(*node, count); });
}

size_t q_node_get_number_of_states(q_node_t node) {
    return api_call<size_t>(no_size, {node}, [&] {
        require(node->is_discrete());
        return node->state_count;
    });
}

q_status_t q_node_set_state_label(q_node_t node, size_t state, const char* label) {
    return api_status({node, label}, [&] { set_state_label(*node, state, label); });
}

const char* q_node_get_state_label(q_node_t node, size_t state) {
    return api_call<const char*>(nullptr, {node}, [&] {
        require(node->is_discrete() && state < node->state_count);
        return state_label(*node, state);
    });
}

q_status_t q_node_set_state_value(q_node_t node, size_t index, q_number_t value) {
    return api_status({node}, [&] { set_state_value(*node, index, value); });
}

q_number_t q_node_get_state_value(q_node_t node, size_t index) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return state_value(*node, index); });
}

int64_t q_node_get_state_index_from_label(q_node_t node, const char* label) {
    return api_call<int64_t>(-1, {node, label}, [&] {
        require(node->is_discrete());
        return state_from_label(*node, label);
    });
}

int64_t q_node_get_state_index_from_value(q_node_t node, q_number_t value) {
    return api_call<int64_t>(-1, {node}, [&] {
        require(state_values_are_valid(*node));
        return state_from_value(*node, value);
    });
}

q_status_t q_node_reorder_states(q_node_t node, const char* const* labels) {
    return api_status({node, labels}, [&] { reorder_states(*node, labels); });
}
