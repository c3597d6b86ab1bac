#include "api_frame.h"
#include "beliefs_report.h"
#include "results.h"

using namespace quarn;

q_number_t q_node_get_belief(q_node_t node, size_t state) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return belief(*node, state); });
}

q_number_t q_node_get_mean(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return continuous_moments(*node).mean; });
}

q_number_t q_node_get_variance(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return continuous_moments(*node).variance; });
}

q_number_t q_node_get_numeric_mean(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return numeric_marginal(*node).mean; });
}

q_number_t q_node_get_numeric_variance(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return numeric_marginal(*node).variance; });
}

q_number_t q_node_get_value(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return function_value(*node); });
}

q_number_t q_node_get_expected_utility(q_node_t node, size_t state) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return expected_utility(*node, state); });
}

q_number_t q_node_get_utility_variance(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return utility_results(*node).variance; });
}

q_number_t q_node_get_utility_minimum(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return utility_results(*node).minimum; });
}

q_number_t q_node_get_utility_maximum(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return utility_results(*node).maximum; });
}

q_number_t q_domain_get_expected_utility(q_domain_t domain) {
    return api_call<q_number_t>(-1.0, {domain}, [&] { return expected_utility(*domain); });
}

q_number_t q_domain_get_normalization_constant(q_domain_t domain) {
    return api_call<q_number_t>(-1.0, {domain}, [&] { return normalization_constant(*domain); });
}

q_number_t q_domain_get_log_normalization_constant(q_domain_t domain) {
    return api_call<q_number_t>(1.0, {domain}, [&] { return log_normalization_constant(*domain); });
}

q_status_t q_domain_print_beliefs(q_domain_t domain) {
    return api_status({domain}, [&] { print_beliefs(*domain); });
}
