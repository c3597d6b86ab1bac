// A table: one number for each configuration of a list of discrete nodes, and one block of moments when the list goes
// on with continuous nodes. Configurations are in row-major order: the last discrete node varies fastest.
#pragma once

#include <span>
#include <vector>

#include "allocation.h"
#include "cg_block.h"
#include "domain.h"
#include "handle_list.h"
#include "quarn.h"
#include "sizes.h"

namespace quarn {

enum class table_type : unsigned char {
    probability = 0,  // starts with ones and no information of its continuous nodes
    utility = 1,      // starts with zeros
    zeros = 2,        // starts with zeros
    ones = 3          // starts with ones
};

}  // namespace quarn

struct q_table {
    // The numbers are made when they are first asked for.
    q_table(quarn::table_type initial_contents, q_node* owning_node) noexcept
        : type(initial_contents), owner(owning_node) {}

    std::size_t continuous_count() const noexcept { return nodes.size() - discrete_count; }
    std::size_t block_size() const noexcept { return quarn::cg_block_size(continuous_count()); }
    std::size_t cg_size() const noexcept { return quarn::saturating_product(size, block_size()); }
    // Position of a continuous node among the continuous nodes; continuous_count() when it is not in the table.
    std::size_t continuous_position(const q_node* node) const noexcept;

    // Makes the numbers where there are none. Fails with q_error_size_too_large or for lack of memory.
    void materialise();
    bool is_materialised() const noexcept { return !data.empty(); }

    quarn::table_type type;
    q_node* owner;
    quarn::handle_list<q_node> nodes;  // discrete nodes, then continuous ones
    std::size_t discrete_count = 0;
    std::size_t size = 1;               // configurations; the largest size: too many to represent
    quarn::number_array data;           // one number for each configuration
    quarn::number_array moments;        // one block for each configuration
    std::vector<quarn::cg_role> roles;  // one for each continuous node
};

namespace quarn {

// The number of configurations of discrete nodes, saturating.
std::size_t configurations(std::span<node* const> discrete_nodes) noexcept;

// A table over a list of nodes, discrete ones first; its numbers are not made yet.
std::unique_ptr<table> new_table(table_type type, node* owner, std::span<node* const> nodes);
// The own table of a node, made on the first request. The node must have a kind or be a utility.
table& own_table(node& owner);
// A table over the discrete parents of a node.
std::unique_ptr<table> new_parent_table(table_type type, node& owner);

std::unique_ptr<table> copy_table(const table& source);

// Tables of another shape, prepared beside the old one. Nothing is done to the source.
table with_state_count(const table& source, const node& changed, std::size_t count);  // more states
table with_node(const table& source, node& added, cg_role role);
// Puts a prepared shape in place; the table stays the same object.
void commit(table& target, table&& prepared) noexcept;

// Changes in place that cannot fail. Tables without the node are left alone.
void drop_states(table& changed, const node& shrunk,
                 std::size_t count) noexcept;  // before the node's count changes
void remove_node(table& changed, const node& removed, std::size_t kept_state) noexcept;
// Moves the entries of state s to state position_of[s]; scratch has room for one number per state.
void permute_states(table& changed, const node& permuted, std::span<const std::size_t> position_of,
                    std::span<double> scratch) noexcept;
void replace_node(table& changed, const node& old_node, node& new_node) noexcept;

// What the own table of a continuous node holds for a configuration.
enum class cg_term { intercept, coefficient, variance };

// The place of a term, of the coefficient on that parent. The table is made where there is none. Fails with
// q_error_usage when the configuration is out of range or the parent is no continuous parent of the node.
double& cg_parameter(node& owner, std::size_t configuration, cg_term term, const node* parent);

}  // namespace quarn
