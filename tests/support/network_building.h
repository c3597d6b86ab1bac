// Short forms of what most tests do to build a network and to look into it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include <quarn.h>

#include "owned_domain.h"

inline q_node_t new_chance(q_domain_t domain, const char* name, std::size_t states,
                           std::initializer_list<q_node_t> parents = {}) {
    q_node_t node = q_domain_new_node(domain, q_category_chance, q_kind_discrete);
    q_node_set_name(node, name);
    q_node_set_number_of_states(node, states);
    for (q_node_t parent : parents) q_node_add_parent(node, parent);
    return node;
}

inline q_node_t new_continuous(q_domain_t domain, const char* name,
                               std::initializer_list<q_node_t> parents = {}) {
    q_node_t node = q_domain_new_node(domain, q_category_chance, q_kind_continuous);
    q_node_set_name(node, name);
    for (q_node_t parent : parents) q_node_add_parent(node, parent);
    return node;
}

// The null-terminated list of handles that the library returned.
template <class Handle>
std::vector<Handle> listed(const Handle* list) {
    std::vector<Handle> items;
    for (; *list != nullptr; ++list) items.push_back(*list);
    return items;
}

inline std::vector<double> data_of(q_table_t table) {
    const double* data = q_table_get_data(table);
    return {data, data + q_table_get_size(table)};
}

inline void set_data(q_table_t table, const std::vector<double>& numbers) {
    std::copy(numbers.begin(), numbers.end(), q_table_get_data(table));
}

// The nodes of a domain in creation order.
inline std::vector<q_node_t> nodes_of(q_domain_t domain) {
    std::vector<q_node_t> nodes;
    for (q_node_t node = q_domain_get_first_node(domain); node != nullptr; node = q_node_get_next(node))
        nodes.insert(nodes.begin(), node);
    return nodes;
}

// A node by its number in creation order, from 0; allocates nothing.
inline q_node_t node_at(q_domain_t domain, std::size_t number) {
    std::size_t newer = 0;
    for (q_node_t node = q_domain_get_first_node(domain); node != nullptr; node = q_node_get_next(node))
        ++newer;
    q_node_t node = q_domain_get_first_node(domain);
    for (; newer > number + 1; --newer) node = q_node_get_next(node);
    return node;
}
