#include "api_frame.h"
#include "d_separation.h"

using namespace quarn;

const q_node_t* q_domain_get_d_connected_nodes(q_domain_t domain, const q_node_t* sources,
                                               const q_node_t* hard, const q_node_t* soft) {
    return api_call<const q_node_t*>(nullptr, {domain, sources, hard, soft}, [&] {
        return nodes_by_separation(*domain, {sources, hard, soft}, separation::connected).array();
    });
}

const q_node_t* q_domain_get_d_separated_nodes(q_domain_t domain, const q_node_t* sources,
                                               const q_node_t* hard, const q_node_t* soft) {
    return api_call<const q_node_t*>(nullptr, {domain, sources, hard, soft}, [&] {
        return nodes_by_separation(*domain, {sources, hard, soft}, separation::separated).array();
    });
}
