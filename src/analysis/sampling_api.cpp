#include "api_frame.h"
#include "drawn_values.h"
#include "simulation.h"

using namespace quarn;

q_status_t q_domain_seed_random(q_domain_t domain, uint32_t seed) {
    return api_status({domain}, [&] { domain->random = random_generator(seed); });
}

q_number_t q_domain_get_uniform_random(q_domain_t domain) {
    return api_call<q_number_t>(-1.0, {domain}, [&] { return domain->random.uniform(); });
}

q_number_t q_domain_get_normal_random(q_domain_t domain, q_number_t mean, q_number_t variance) {
    return api_call<q_number_t>(-1.0, {domain}, [&] {
        require(variance >= 0);
        return domain->random.normal(mean, variance);
    });
}

q_status_t q_domain_simulate(q_domain_t domain) {
    return api_status({domain}, [&] { simulate(*domain); });
}

int64_t q_node_get_sampled_state(q_node_t node) {
    return api_call<int64_t>(-1, {node}, [&] { return static_cast<int64_t>(drawn_state(*node)); });
}

q_number_t q_node_get_sampled_value(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return drawn_value(*node); });
}

q_number_t q_node_get_sampled_utility(q_node_t node) {
    return api_call<q_number_t>(-1.0, {node}, [&] { return drawn_utility(*node); });
}

q_number_t q_domain_get_sampled_log_probability(q_domain_t domain) {
    return api_call<q_number_t>(1.0, {domain}, [&] {
        require(domain->configuration_is_drawn);
        return domain->drawn_log_probability;
    });
}
