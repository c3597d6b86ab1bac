// The junction forest of a compiled domain: cliques linked by separators into one tree for each connected part of the
// moral graph, with the tables that propagation works on.
#pragma once

#include <memory>
#include <vector>

#include "allocation.h"
#include "domain.h"
#include "findings.h"
#include "handle_list.h"
#include "loop_plan.h"
#include "node.h"
#include "quarn.h"

namespace quarn {

using clique = ::q_clique;
using junction_tree = ::q_junction_tree;

// The link between two cliques, over the nodes that they share (possibly none).
struct separator {
    clique* parent;  // the one nearer the root
    clique* child;
    std::vector<node*> members;
    std::size_t size = 1;
    number_array table;
    loop_plan in_parent;  // between the parent's table and the separator's
    loop_plan in_child;
};

// One node's table, multiplied into the clique that it is assigned to.
struct assigned_table {
    node* owner;
    loop_plan in_clique;
};

}  // namespace quarn

struct q_clique {
    std::size_t number = 0;  // from 1, in order of creation: larger than those of the cliques below it
    q_junction_tree* tree = nullptr;
    quarn::handle_list<q_node> members;  // in the order of the table
    std::size_t size = 1;                // configurations
    quarn::number_array table;
    double smallest_entry = 1;  // while messages come in: no positive entry of the table is smaller
    quarn::handle_list<q_clique> neighbors;     // newest link first
    quarn::separator* to_parent = nullptr;      // null: the root of its tree
    std::vector<quarn::assigned_table> tables;  // in creation order of their nodes
};

struct q_junction_tree {
    q_junction_tree* next = nullptr;
    q_clique* root = nullptr;
    quarn::handle_list<q_clique> cliques;  // newest (highest number) first: parents before their children
    std::vector<quarn::separator*> separators;  // of the cliques but the root, in the same order
    quarn::handle_list<q_node> nodes;           // in creation order

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
    clique* home = nullptr;  // takes its table
    clique* best = nullptr;  // where its belief is read
    loop_plan in_best;       // between that clique's table and the beliefs
    findings propagated;
    std::size_t first_belief = 0;  // position of its beliefs among all
};

struct junction_forest final : compiled_state {
    void table_changed(const node& changed) noexcept override;

    compiled_node& of(const node& member) noexcept { return nodes[member.vertex]; }
    const compiled_node& of(const node& member) const noexcept { return nodes[member.vertex]; }
    junction_tree& tree_of(const node& member) const noexcept { return *of(member).home->tree; }

    std::vector<std::unique_ptr<clique>> cliques;  // newest (highest number) first
    std::vector<std::unique_ptr<separator>> separators;
    std::vector<std::unique_ptr<junction_tree>> trees;
    std::vector<compiled_node> nodes;  // by q_node::vertex: creation order
    number_array beliefs;              // of all nodes, in the same order
    number_array scratch;              // room for the largest separator, or the states of any node
};

// The sum of the table sizes of the cliques, saturating.
std::size_t total_size(const junction_tree& tree) noexcept;

// The forest of a compiled domain, or null.
junction_forest* forest_of(const domain& compiled) noexcept;

// Compiles a domain; on failure it is left uncompiled.
void compile(domain& compiled);

}  // namespace quarn
