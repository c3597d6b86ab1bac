// A chain component: discrete chance nodes joined by undirected links. Given the parents of all of them, their joint
// distribution is the product of the tables that they share and of their own tables, divided by its sum over the members
// [Lauritzen & Wermuth 1989; Frydenberg 1990].
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "domain.h"
#include "handle_list.h"
#include "table.h"

namespace quarn {

struct chain_component {
    handle_list<node> members;  // in the order in which they were joined
    // Over some parents of the component and some of its members each; 1 everywhere unless something else is written.
    std::vector<std::unique_ptr<table>> potentials;
    uint64_t mark = 0;  // of the last walk over the graph that met it; see q_domain::new_mark
};

// Joins nodes by a potential over its parents and them, both as listed; each parent that has no link yet to one of them
// gets it. Components that the nodes are in become one, in the place of the oldest. Uncompiles the domain. Fails, with
// nothing changed, with q_error_usage unless all children are discrete chance nodes and all parents discrete, each node
// listed once; with q_error_cyclic_network when a directed cycle would arise, a component counting as one node (so that no
// member is a parent of another one); with q_error_cyclic_functional_dependency.
table& join_by_potential(domain& changed, std::span<node* const> children, std::span<node* const> parents);

// The parents of all members, each once, in the order of the members and of their parents. Marks nodes.
std::vector<node*> parents_of(const chain_component& component);

}  // namespace quarn
