// Short forms of what most tests do to build a network and to look into it.
#pragma once
#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "owned_domain.h"

// A node as two letters: category c, d, u or f (chance, decision, utility, function) and kind d, c or o.
inline q_node_t new_node(q_domain_t domain, const char* letters) {
    const int categories[] = {q_category_chance, q_category_decision, q_category_utility,
                              q_category_function};
    const int kinds[] = {q_kind_discrete, q_kind_continuous, q_kind_other};
    return q_domain_new_node(domain, categories[std::string("cduf").find(letters[0])],
                             kinds[std::string("dco").find(letters[1])]);
}

inline q_node_t new_chance(q_domain_t domain, const char* name, std::size_t states,
                           std::initializer_list<q_node_t> parents = {}, const char* letters = "cd") {
    q_node_t node = new_node(domain, letters);
    q_node_set_name(node, name);
    q_node_set_number_of_states(node, states);
    for (q_node_t parent : parents) q_node_add_parent(node, parent);
    return node;
}
inline q_node_t new_continuous(q_domain_t domain, const char* name,
                               std::initializer_list<q_node_t> parents = {}) {
    return new_chance(domain, name, 0, parents, "cc");
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

inline q_node_t with_table(q_node_t node, const std::vector<double>& numbers) {
    set_data(q_node_get_table(node), numbers);
    return q_node_touch_table(node), node;
}
// A node with values and a table of its own.
inline q_node_t new_numeric(q_domain_t domain, const char* name, q_subtype_t subtype,
                            const std::vector<double>& values, const std::vector<double>& table) {
    q_node_t node = new_chance(domain, name, table.size());
    q_node_set_subtype(node, subtype);
    for (std::size_t i = 0; i < values.size(); ++i) q_node_set_state_value(node, i, values[i]);
    return with_table(node, table);
}

// Compiles it unless it is compiled.
inline q_status_t propagate(const owned_domain& domain, q_equilibrium_t equilibrium = q_equilibrium_sum,
                            q_mode_t mode = q_mode_normal) {
    if (q_domain_is_compiled(domain.get()) == 0) q_domain_compile(domain.get());
    return q_domain_propagate(domain.get(), equilibrium, mode);
}
inline owned_domain propagated(owned_domain domain) {
    EXPECT_EQ(propagate(domain), q_error_none);
    return domain;
}

// The nodes of a domain in creation order, and one of them by its number from 0.
inline std::vector<q_node_t> nodes_of(q_domain_t domain) {
    std::vector<q_node_t> nodes;
    for (q_node_t node = q_domain_get_first_node(domain); node != nullptr; node = q_node_get_next(node))
        nodes.insert(nodes.begin(), node);
    return nodes;
}
inline q_node_t node_at(q_domain_t domain, std::size_t number) { return nodes_of(domain).at(number); }

// Unnamed nodes such as "cd uo", with links between them such as "01": from the first to the second.
inline owned_domain network(const std::string& nodes, const std::string& links = "") {
    owned_domain domain(q_domain_new());
    std::istringstream letters(nodes), ends(links);
    for (std::string node; letters >> node;) EXPECT_NE(new_node(domain.get(), node.c_str()), nullptr) << node;
    const auto end = [&](char digit) { return node_at(domain.get(), std::size_t(digit - '0')); };
    for (std::string link; ends >> link;)
        EXPECT_EQ(q_node_add_parent(end(link[1]), end(link[0])), q_error_none) << link;
    return domain;
}
