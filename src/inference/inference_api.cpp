#include "api_frame.h"
#include "compression.h"
#include "policy_updating.h"
#include "propagation.h"

using namespace quarn;

q_status_t q_domain_propagate(q_domain_t domain, q_equilibrium_t equilibrium, q_mode_t mode) {
    return api_status({domain}, [&] { propagate(*domain, equilibrium, mode); });
}

q_status_t q_junction_tree_propagate(q_junction_tree_t tree, q_equilibrium_t equilibrium, q_mode_t mode) {
    return api_status({tree}, [&] { propagate(*tree, nullptr, equilibrium, mode); });
}

q_status_t q_clique_propagate(q_clique_t clique, q_equilibrium_t equilibrium, q_mode_t mode) {
    return api_status({clique}, [&] { propagate(*clique->tree, clique, equilibrium, mode); });
}

q_number_t q_domain_compress(q_domain_t domain) {
    return api_call<q_number_t>(-1.0, {domain}, [&] { return compress(*domain); });
}

q_status_t q_domain_update_policies(q_domain_t domain) {
    return api_status({domain}, [&] { update_policies(*domain); });
}
