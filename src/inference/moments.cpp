#include "moments.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "cg_combination.h"
#include "cg_conditioning.h"
#include "cg_evidence.h"
#include "cg_marginals.h"
#include "clique_choice.h"
#include "errors.h"

namespace quarn {
namespace {

std::vector<std::size_t> positions_of(const table& asked, cg_role role) {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < asked.roles.size(); ++i)
        if (asked.roles[i] == role) positions.push_back(i);
    return positions;
}

// Weights are messages of their own.
void forget_weights(table& message) noexcept { std::ranges::fill(message.data, 1.0); }

// Sends what a clique knows of the nodes that it shares with its parent, and keeps the rest given these.
void collect_over(const tree_context& in, separator& link) {
    table& message = *link.message->table;
    const std::vector<std::size_t>& in_child = link.message->in_child.positions;
    std::vector<std::size_t> sent;
    for (std::size_t i = 0; i < in_child.size(); ++i) {
        message.roles[i] = link.child->cg_table->roles[in_child[i]];
        if (message.roles[i] == cg_role::head) sent.push_back(in_child[i]);
    }
    std::ranges::fill(message.moments, 0.0);
    strong_marginal(link.message->in_child, *link.child->cg_table, message, in.workers);
    forget_weights(message);
    cg_combine(link.message->in_parent, *link.parent->cg_table, message, in.workers);
    condition_on(*link.child->cg_table, sent, in.workers);
}

bool depends_on_tails(const table& asked, std::size_t head) noexcept {
    const double* block = asked.moments.data();
    for (std::size_t i = 0; i < asked.size; ++i, block += asked.block_size())
        for (std::size_t k = 0; k < asked.roles.size(); ++k)
            if (asked.roles[k] == cg_role::tail && block[cg_covariance(head, k)] != 0) return true;
    return false;
}

// A head of a table given its tails.
std::unique_ptr<table> distribution_of(node& head, const table& source, const workers& allowed) {
    std::vector<node*> nodes(source.nodes.begin(), source.nodes.begin() + source.discrete_count);
    for (const std::size_t i : positions_of(source, cg_role::tail))
        nodes.push_back(source.nodes[source.discrete_count + i]);
    nodes.push_back(&head);
    auto distribution = new_table(table_type::probability, nullptr, nodes);
    distribution->materialise();
    std::ranges::fill(distribution->roles, cg_role::tail);
    distribution->roles.back() = cg_role::head;
    strong_marginal(make_cg_plan(source, *distribution), source, *distribution, allowed);
    forget_weights(*distribution);
    return distribution;
}

// An observed node on its way to where it depends on no other one. The table is that of the clique, with the node.
class moved_node {
public:
    moved_node(const tree_context& in, compiled_node& moved, double value)
        : in_(in), node_(*moved.owner), value_(value), at_(moved.top) {}

    void move() {
        while (depends_on_tails(numbers(), position())) step();
    }

    bool evaluate() {
        const std::size_t possible = possible_configurations();
        insert_head_evidence(numbers(), position(), value_, in_.workers);
        leave();
        const double log_factor = -std::log(2 * std::numbers::pi) / 2;  // of every normal density
        in_.tree.normalization *= std::exp(log_factor);
        in_.tree.log_normalization += log_factor;
        return possible_configurations() < possible;
    }

private:
    table& numbers() noexcept { return extended_ ? *extended_ : *at_->cg_table; }
    std::size_t possible_configurations() noexcept {
        return static_cast<std::size_t>(
            std::ranges::count_if(numbers().data, [](double w) { return std::isfinite(w); }));
    }
    std::size_t position() noexcept { return numbers().continuous_position(&node_); }

    void step() {
        clique& parent = *at_->to_parent->parent;
        const auto distribution = distribution_of(node_, numbers(), in_.workers);
        auto next = std::make_unique<table>(with_node(*parent.cg_table, node_, cg_role::unknown));
        cg_combine(make_cg_plan(*next, *distribution), *next, *distribution, in_.workers);
        const std::size_t given = position();
        condition_on(numbers(), {&given, 1}, in_.workers);
        insert_tail_evidence(numbers(), given, value_, in_.workers);
        leave();
        extended_ = std::move(next);
        at_ = &parent;
    }

    // The node is no member of the clique where it was taken along.
    void leave() noexcept {
        if (!extended_) return;
        remove_node(*extended_, node_, 0);
        commit(*at_->cg_table, std::move(*extended_));
        extended_.reset();
    }

    const tree_context& in_;
    node& node_;
    double value_;
    clique* at_;
    std::unique_ptr<table> extended_;
};

void insert_where_given(const tree_context& in, const compiled_node& observed, double value) {
    std::vector<clique*> holders{observed.top};
    for (std::size_t next = 0; next < holders.size(); ++next) {
        clique& holder = *holders[next];
        for (clique* neighbor : holder.neighbors)
            if (neighbor->number < holder.number && holds(*neighbor, *observed.owner))
                holders.push_back(neighbor);
        table& changed = *holder.cg_table;
        const std::size_t position = changed.continuous_position(observed.owner);
        if (changed.roles[position] == cg_role::tail)
            insert_tail_evidence(changed, position, value, in.workers);
    }
}

// Joint distribution of the nodes of a clique, from that of its parent.
void distribute_over(const tree_context& in, separator& link) {
    table& message = *link.message->table;
    const table& source = link.parent->joint_table();
    for (std::size_t i = 0; i < message.roles.size(); ++i)
        message.roles[i] = source.roles[link.message->in_parent.positions[i]];
    std::ranges::fill(message.moments, 0.0);
    weak_marginal(link.message->in_parent, source, message, in.workers);
    forget_weights(message);
    const table& given = *link.child->cg_table;
    table& joint = *link.child->joint;
    std::ranges::copy(given.data, joint.data.begin());
    std::ranges::copy(given.moments, joint.moments.begin());
    joint.roles = given.roles;
    cg_combine(link.message->in_child, joint, message, in.workers);
}

void read_moments(const tree_context& in, compiled_node& read) {
    if (read.value_is_propagated) {
        read.mean = read.propagated_value;
        read.variance = 0;
        return;
    }
    table& distribution = *read.reading->table;
    weak_marginal(read.reading->in_best, read.best->joint_table(), distribution, in.workers);
    read.mean = distribution.moments[cg_mean(0)];
    read.variance = distribution.moments[cg_covariance(0, 0)];
}

}  // namespace

void combine_moments(const tree_context& in, clique& target, const assigned_table& assigned) {
    cg_combine(assigned.in_cg_table, *target.cg_table, assigned.numbers(), in.workers);
}

void collect_moments(const tree_context& in) {
    for (auto next = in.tree.separators.rbegin(); next != in.tree.separators.rend(); ++next)
        if ((*next)->message != nullptr) collect_over(in, **next);
}

bool observe(const tree_context& in, compiled_node& observed, double value) {
    insert_where_given(in, observed, value);
    moved_node moved(in, observed, value);
    moved.move();
    return moved.evaluate();
}

void distribute_moments(const tree_context& in) {
    for (separator* link : in.tree.separators)
        if (link->message != nullptr) distribute_over(in, *link);
    for (node* member : in.tree.nodes)
        if (member->is_continuous()) read_moments(in, in.forest.of(*member));
}

}  // namespace quarn
