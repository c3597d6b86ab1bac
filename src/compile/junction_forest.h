// The junction forest of a compiled domain: cliques linked by separators into one tree for each connected part of the
// moral graph, with the tables that propagation works on.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "allocation.h"
#include "cg_block.h"
#include "domain.h"
#include "findings.h"
#include "handle_list.h"
#include "loop_plan.h"
#include "node.h"
#include "quarn.h"
#include "sizes.h"
#include "table.h"

namespace quarn {

using clique = ::q_clique;
using junction_tree = ::q_junction_tree;

// How large a table is: that over the discrete nodes, and how many continuous nodes it has for each configuration.
struct table_size {
    std::size_t configurations = 1;
    std::size_t continuous = 0;

    // What the continuous nodes count for in a report.
    std::size_t continuous_part() const noexcept { return saturating_product(configurations, continuous); }
    // Numbers: a weight, and with continuous nodes their moments, for each configuration.
    std::size_t numbers() const noexcept {
        return saturating_product(configurations, 1 + cg_block_size(continuous));
    }
    bool operator==(const table_size&) const = default;
    auto operator<=>(const table_size& other) const noexcept {
        return std::pair(configurations, continuous) <=> std::pair(other.configurations, other.continuous);
    }
};
table_size size_of(std::span<node* const> members) noexcept;

// The link between two cliques, over the nodes that they share (possibly none).
struct separator {
    clique* parent;  // the one nearer the root
    clique* child;
    handle_list<node> members;  // discrete nodes, then continuous ones
    table_size size;
    number_array table;                 // without continuous members
    std::unique_ptr<q_table> cg_table;  // with them
    loop_plan in_parent;  // between the tables over the discrete nodes of the parent and the separator
    loop_plan in_child;
};

// One node's table, which goes into the clique that it is assigned to.
struct assigned_table {
    node* owner;
    loop_plan in_clique;  // over the discrete nodes that are not excluded
};

}  // namespace quarn

struct q_clique {
    std::size_t number = 0;  // from 1, in order of creation: larger than those of the cliques below it
    q_junction_tree* tree = nullptr;
    quarn::handle_list<q_node>
        members;  // discrete nodes, then continuous ones, in either part by q_node::vertex
    quarn::table_size size;
    quarn::number_array table;          // without continuous members
    std::unique_ptr<q_table> cg_table;  // with them
    double smallest_entry = 1;          // while messages come in: no positive entry of the table is smaller
    quarn::handle_list<q_clique> neighbors;     // newest link first
    quarn::separator* to_parent = nullptr;      // null: the root of its tree
    std::vector<quarn::assigned_table> tables;  // in creation order of their nodes
    std::vector<quarn::assigned_table> utilities;

    std::span<q_node* const> discrete_members() const noexcept {
        return {members.begin(), members.size() - size.continuous};
    }
};

struct q_junction_tree {
    q_junction_tree* next = nullptr;
    q_clique* root = nullptr;
    quarn::handle_list<q_clique> cliques;  // newest (highest number) first: parents before their children
    std::vector<quarn::separator*> separators;  // of the cliques but the root, in the same order
    quarn::handle_list<q_node> nodes;           // those with a kind that are not excluded, in creation order

    // Kept by propagation.
    q_equilibrium_t equilibrium = q_equilibrium_none;
    bool tables_changed = true;  // since the tables were last taken from the nodes
    bool evidence_is_propagated = false;
    double normalization = 1.0;  // probability of the propagated evidence, and its logarithm
    double log_normalization = 0.0;
};

namespace quarn {

// What compilation and propagation know of a node with a kind.
struct compiled_node {
    node* owner = nullptr;
    junction_tree* tree = nullptr;
    clique* home = nullptr;  // takes its table; null: all that is left of the table is one number
    clique* best = nullptr;  // where its belief is read; null: an excluded node
    loop_plan in_best;       // between that clique's table and the beliefs
    findings propagated;
    std::size_t first_belief = 0;  // position of its beliefs among all
};

// The forest of a triangulated domain. When the domain is compiled, tables are assigned and there is room for numbers.
struct junction_forest final : compiled_state {
    void table_changed(const node& changed) noexcept override;

    compiled_node& of(const node& member) noexcept { return nodes[member.vertex]; }
    const compiled_node& of(const node& member) const noexcept { return nodes[member.vertex]; }

    bool is_compiled = false;
    std::size_t vertex_count = 0;

    std::vector<std::unique_ptr<clique>> cliques;  // newest (highest number) first
    std::vector<std::unique_ptr<separator>> separators;
    std::vector<std::unique_ptr<junction_tree>> trees;
    std::vector<compiled_node> nodes;  // by q_node::vertex: those of the moral graph, then the excluded ones
    number_array beliefs;              // of all nodes, in the same order
    number_array scratch;              // room for the largest separator, or the states of any node
};

// The sum of the table sizes of the cliques, saturating.
std::size_t total_size(const junction_tree& tree) noexcept;

// The forest of a domain that is at least triangulated, or null.
junction_forest* triangulated_forest(const domain& asked) noexcept;
// The forest of a compiled domain, or null.
junction_forest* forest_of(const domain& compiled) noexcept;

}  // namespace quarn
