// A model: an expression for each configuration of some of a node's discrete parents, from which the node's table, or the
// value of a function, is computed.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "domain.h"
#include "expression.h"
#include "handle_list.h"

struct q_model {
    explicit q_model(q_node& of) noexcept : owner(&of) {}

    q_node* owner;
    quarn::handle_list<q_node> nodes;  // discrete parents of the owner, each once; the last varies fastest
    std::vector<quarn::owned_expression> expressions;  // one for each configuration of the nodes; null: none
    std::size_t samples_per_interval = 0;              // 0: not set
};

namespace quarn {

using model = ::q_model;

// Up to here doubles, as files hold them, tell all integers apart.
constexpr std::size_t most_samples_per_interval = std::size_t{1} << 53;

// Gives a node without a model one that holds no expressions yet. Fails with q_error_usage for a continuous node, or when
// the nodes are not discrete parents of it, each listed once; with q_error_size_too_large.
model& create_model(node& owner, std::span<node* const> nodes);
void delete_model(model& deleted) noexcept;

// Puts an expression that nothing owns, or null, in the place of the present one. What it refers to must be parents of the
// owner, else q_error_invalid_expression.
void set_expression(model& changed, std::size_t configuration, expression* added);

// A copy for a clone of the owner.
std::unique_ptr<model> copy_model(const model& original, node& clone);

// More states of a model node in two steps: making room, which can fail and changes nothing, and the commitment, which
// cannot fail and comes before the node's count changes. The new configurations have no expressions.
class prepared_states {
public:
    // Fails with q_error_size_too_large.
    prepared_states(model& changed, const node& grown, std::size_t count);
    void commit() noexcept;

private:
    model* model_;
    const node* grown_;
    std::size_t count_;
    std::vector<owned_expression> longer_;
};

// The removal of a parent in the same two steps: the expressions for the kept state of a model node stay, and in them a
// constant takes the place of every reference to the parent. Several may be prepared for one model before the first is
// committed.
class prepared_removal {
public:
    prepared_removal(model& changed, const node& parent, std::size_t kept_state);
    void commit() noexcept;

private:
    bool yields_label() const noexcept;
    bool refers_to_parent(const expression& asked) const noexcept;
    void replace_references(expression& tree) noexcept;

    model* model_;
    const node* parent_;
    std::size_t kept_state_;
    double number_ = 0;         // what a parent that yields one becomes
    std::vector<text> labels_;  // what the references to one that yields labels become
};

// Changes in place that cannot fail.
void drop_states(model& changed, const node& shrunk,
                 std::size_t count) noexcept;  // before the node's count changes
// Moves the expressions for state s of a model node to state position_of[s]; scratch has room for one for each state.
void permute_states(model& changed, const node& permuted, std::span<const std::size_t> position_of,
                    std::span<owned_expression> scratch) noexcept;
// The owner's states move likewise: the weights of its distributions over them follow.
void permute_weights(model& changed, std::span<const std::size_t> position_of,
                     std::span<owned_expression> scratch) noexcept;
void replace_node(model& changed, const node& old_parent, node& new_parent) noexcept;

}  // namespace quarn
