#include "api_frame.h"
#include "propagation.h"
#include "results.h"

using namespace quarn;

q_status_t q_domain_propagate(q_domain_t domain, q_equilibrium_t equilibrium, q_mode_t mode) {
    return api_status({domain}, [&] { propagate(*domain, equilibrium, mode); });
}

q_number_t q_node_get_belief(q_node_t node, size_t state) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return belief(*node, state); });
}

q_number_t q_domain_get_normalization_constant(q_domain_t domain) {
    return api_call<q_number_t>(-1.0, {domain}, [&] { return normalization_constant(*domain); });
}

q_number_t q_domain_get_log_normalization_constant(q_domain_t domain) {
    return api_call<q_number_t>(1.0, {domain}, [&] { return log_normalization_constant(*domain); });
}
