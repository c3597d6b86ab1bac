// Short forms of what most tests do to build a network and to look into it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
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

// A node as two letters: category c, d, u or f (chance, decision, utility, function) and kind d, c or o.
inline q_node_t new_node(q_domain_t domain, const char* letters) {
    const q_category_t category = letters[0] == 'c'   ? q_category_chance
                                  : letters[0] == 'd' ? q_category_decision
                                  : letters[0] == 'u' ? q_category_utility
                                                      : q_category_function;
    return q_domain_new_node(domain, category,
                             letters[1] == 'd'   ? q_kind_discrete
                             : letters[1] == 'c' ? q_kind_continuous
                                                 : q_kind_other);
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

// Unnamed nodes, and links between them: from number, to number.
using links = std::vector<std::pair<std::size_t, std::size_t>>;
inline owned_domain network(const std::vector<const char*>& nodes, const links& present) {
    owned_domain domain(q_domain_new());
    for (const char* node : nodes) EXPECT_NE(new_node(domain.get(), node), nullptr) << node;
    for (const auto& [from, to] : present)
        EXPECT_EQ(q_node_add_parent(node_at(domain.get(), to), node_at(domain.get(), from)), q_error_none)
            << from << " to " << to;
    return domain;
}
