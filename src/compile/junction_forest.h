// The junction forest of a compiled domain: cliques linked by separators into one tree for each connected part of the
// moral graph, with the tables that propagation works on.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "allocation.h"
#include "cg_block.h"
#include "cg_plan.h"
#include "domain.h"
#include "findings.h"
#include "handle_list.h"
#include "loop_plan.h"
#include "node.h"
#include "quarn.h"
#include "sizes.h"
#include "table.h"
#include "table_map.h"

namespace quarn {

using clique = ::q_clique;
using junction_tree = ::q_junction_tree;
struct compiled_node;

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

// The tables of a tree in its equilibrium without evidence, to start from again.
struct saved_tables {
    number_array numbers;  // of cliques, then of separators: weights, utilities, moments
    std::vector<cg_role> roles;
};

// What passes between two cliques that share continuous nodes: scratch for their moments.
struct cg_message {
    std::unique_ptr<q_table> table;  // over the members of the separator
    cg_plan in_parent;
    cg_plan in_child;
};

// The same plans as those of a separator, with a level for every node that is removed.
struct weighted_plans {
    weighted_plan in_parent;
    weighted_plan in_child;
};

// The link between two cliques, over the nodes that they share (possibly none).
struct separator {
    clique* parent;  // the one nearer the root
    clique* child;
    handle_list<node> members;  // discrete nodes, then continuous ones
    table_size size;
    number_array table;      // over the discrete members
    number_array utilities;  // alike; empty in a tree without utilities
    table_map in_parent;     // between the tables over the discrete nodes of the parent and the separator
    table_map in_child;
    std::unique_ptr<cg_message> message;       // with continuous members
    std::unique_ptr<weighted_plans> weighted;  // made for the first fast retraction

    std::span<node* const> discrete_members() const noexcept {
        return {members.begin(), members.size() - size.continuous};
    }
};

// A table that goes into the clique that it is assigned to.
struct assigned_table {
    q_table* whole = nullptr;
    node* owner = nullptr;  // whose own table it is; null: a chain component's
    bool holds_logarithms = false;
    table_map in_clique;  // over the discrete nodes that are not excluded
    cg_plan in_cg_table;  // of the table of a continuous node
    // Where the table has excluded nodes: what is left of it in the configuration of these that was cut out last.
    std::unique_ptr<q_table> slice;
    std::ptrdiff_t slice_configuration = -1;  // -1: none yet

    const q_table& numbers() const noexcept { return slice != nullptr ? *slice : *whole; }
};

}  // namespace quarn

struct q_clique {
    std::size_t number = 0;  // from 1, in order of creation: larger than those of the cliques below it
    q_junction_tree* tree = nullptr;
    quarn::handle_list<q_node>
        members;  // discrete nodes, then continuous ones, in either part by q_node::vertex
    quarn::table_size size;
    quarn::number_array table;          // without continuous members
    quarn::number_array utilities;      // over the discrete members; empty in a tree without utilities
    std::unique_ptr<q_table> cg_table;  // with continuous members: given those of the separator to the parent
    std::unique_ptr<q_table> joint;     // alike, but of all members together, as far as the moments go
    double smallest_entry = 1;          // while messages come in: no positive entry of the table is smaller
    quarn::handle_list<q_clique> neighbors;  // newest link first
    quarn::separator* to_parent = nullptr;   // null: the root of its tree
    std::vector<quarn::assigned_table>
        tables;  // in creation order of their nodes, then those of chain components
    std::vector<quarn::assigned_table> utility_tables;
    bool is_active = false;        // in the present propagation: has something new to tell
    bool is_reversed = false;      // likewise: the root chosen is the clique or below it
    std::size_t active_below = 0;  // likewise: active cliques at or below it

    // The numbers over the discrete members; with continuous ones the weights of the CG table.
    std::span<double> weights() noexcept {
        return cg_table != nullptr ? cg_table->data.span() : table.span();
    }
    const q_table& joint_table() const noexcept { return joint != nullptr ? *joint : *cg_table; }
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

    std::vector<quarn::compiled_node*> excluded;  // whose tables go into the tree, or at least numbers
    bool has_utilities = false;
    bool has_continuous_nodes = false;
    bool has_chain_tables = false;  // of chain components

    // Kept by propagation.
    uint64_t results_count = 0;  // how often results were computed: the tables are others since
    q_equilibrium_t equilibrium = q_equilibrium_none;
    q_mode_t mode = q_mode_normal;
    bool tables_changed = true;        // since the tables were last taken from the nodes
    std::size_t changed_evidence = 0;  // nodes whose entered evidence differs from what is propagated
    bool evidence_is_propagated = false;
    bool likelihood_is_propagated = false;
    bool cg_evidence_is_propagated = false;
    double normalization = 1.0;  // probability of the propagated evidence, and its logarithm
    double log_normalization = 0.0;
    double prior_normalization = 1.0;  // the same without evidence: not 1 where policies are left out
    double prior_log_normalization = 0.0;
    double prior_excess = 0.0;  // logarithm of what the tables multiply out to, as a part of that
    bool is_extensible = true;  // no entry came near the smallest double, where evidence may need it again
    std::unique_ptr<quarn::saved_tables> saved;  // as they are without evidence; null: none
};

namespace quarn {

// Where the distribution of a continuous node is read.
struct cg_reading {
    std::unique_ptr<q_table> table;  // over the node alone
    cg_plan in_best;
};

// What compilation and propagation know of a node with a kind.
struct compiled_node {
    node* owner = nullptr;
    junction_tree* tree = nullptr;
    clique* home = nullptr;  // takes its table; null: all that is left of the table is one number
    clique* best = nullptr;  // where its belief is read; null: an excluded node
    clique* top = nullptr;   // the one nearest the root that holds it
    table_map in_best;       // between the best clique's table and the beliefs of a discrete node
    std::size_t first_state =
        0;  // position of its numbers in the arrays with one for each state of each node
    int64_t propagated_index = findings::none;  // as in findings
    std::ptrdiff_t number_configuration = -1;   // without home: of its family when that number was taken last
    bool policy_is_left_out = false;  // of a decision: from the tables without evidence, as it is decided
    std::unique_ptr<weighted_plan> weighted_in_best;  // made for the first fast retraction

    // Continuous nodes only.
    std::unique_ptr<cg_reading> reading;
    bool value_is_propagated = false;
    double propagated_value = 0;
    double mean = 0;
    double variance = 0;
};

// What is known of a utility node; its q_node::vertex counts the utilities.
struct compiled_utility {
    node* owner = nullptr;
    junction_tree* tree = nullptr;
    double expected = 0;
    double variance = 0;
    double minimum = 0;  // of the values with positive probability
    double maximum = 0;
};

// What is known of a chain component.
struct compiled_component {
    const chain_component* component = nullptr;
    junction_tree* tree =
        nullptr;  // that the normaliser goes into; with excluded members others may have the rest
    // What the joint distribution of the members is multiplied by: over all parents, as logarithms, and a common factor.
    std::unique_ptr<q_table> log_normalizer;
    double log_factor = 0;
};

// The forest of a triangulated domain. When the domain is compiled, tables are assigned and there is room for numbers.
struct junction_forest final : compiled_state {
    void table_changed(const node& changed) noexcept override;

    compiled_node& of(const node& member) noexcept { return nodes[member.vertex]; }
    const compiled_node& of(const node& member) const noexcept { return nodes[member.vertex]; }

    bool is_compiled = false;
    bool is_compressed = false;
    std::size_t vertex_count = 0;

    std::vector<std::unique_ptr<clique>> cliques;  // newest (highest number) first
    std::vector<std::unique_ptr<separator>> separators;
    std::vector<std::unique_ptr<junction_tree>> trees;
    std::vector<compiled_node> nodes;  // by q_node::vertex: those of the moral graph, then the excluded ones
    std::vector<compiled_utility> utilities;  // in creation order
    std::vector<compiled_component> components;

    // One number for each state of each node, in the same order.
    number_array beliefs;
    number_array propagated_weights;  // they count where the index is findings::general, but are always right
    number_array expected_utilities;  // empty in a domain without utility nodes
    number_array retraction_weights;  // evidence, the largest of a node 1; made for the first fast retraction

    std::size_t table_numbers =
        0;  // in all tables of cliques and separators; 0: not counted since they were made

    // Room for two tables as large as the largest separator, or parents of a utility, or the states of any node.
    number_array scratch;

    findings_view propagated(const compiled_node& asked) const noexcept {
        return {asked.propagated_index, states_of(asked, propagated_weights)};
    }
    static std::span<double> states_of(const compiled_node& asked, number_array& numbers) noexcept {
        return numbers.span().subspan(asked.first_state, asked.owner->state_count);
    }
    static std::span<const double> states_of(const compiled_node& asked,
                                             const number_array& numbers) noexcept {
        return numbers.span().subspan(asked.first_state, asked.owner->state_count);
    }
    // The excluded nodes; they are in no clique.
    std::span<compiled_node> excluded() noexcept { return std::span(nodes).subspan(vertex_count); }
    std::span<const compiled_node> excluded() const noexcept {
        return std::span(nodes).subspan(vertex_count);
    }
};

// The sum of the table sizes of the cliques, saturating.
std::size_t total_size(const junction_tree& tree) noexcept;

// The forest of a domain that is at least triangulated, or null.
junction_forest* triangulated_forest(const domain& asked) noexcept;
// The forest of a compiled domain, or null.
junction_forest* forest_of(const domain& compiled) noexcept;

}  // namespace quarn
