#include "message_passing.h"

#include <algorithm>
#include <functional>
#include <ranges>

#include "errors.h"
#include "kernels.h"

namespace quarn {
namespace {

constexpr double largest_ratio = std::numeric_limits<double>::max() / 2;

// The clique nearest to the root of those that have all active cliques at or below them; the root when none is active.
clique& meeting_point(junction_tree& tree) noexcept {
    std::size_t active = 0;
    for (clique* counted : tree.cliques) {
        counted->active_below = counted->is_active ? 1 : 0;
        active += counted->active_below;
    }
    if (active == 0) return *tree.root;
    for (auto next = tree.cliques.end(); next != tree.cliques.begin();) {  // children first
        clique& tested = **--next;
        if (tested.active_below == active) return tested;
        tested.to_parent->parent->active_below += tested.active_below;
    }
    return *tree.root;
}

}  // namespace

message_passing::message_passing(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode,
                                 clique& root)
    : in_(in), equilibrium_(equilibrium), mode_(mode), root_(root) {
    for (clique* reset : in_.tree.cliques) reset->is_reversed = false;
    for (clique* next = &root; next->to_parent != nullptr; next = next->to_parent->parent)
        next->is_reversed = true;
    if (mode_ == q_mode_normal) return;
    std::size_t most_members = 0;
    for (const clique* sender : in_.tree.cliques)
        most_members = std::max(most_members, sender->members.size());
    weights_.reserve(most_members);
}

void message_passing::run() {
    collect();
    normalize_root();
    distribute();
}

// Children first; then along the way from the tree's own root to the one chosen.
void message_passing::collect() {
    const std::vector<separator*>& links = in_.tree.separators;
    for (auto next = links.rbegin(); next != links.rend(); ++next)
        if (separator& link = **next; link.child->is_active && !link.child->is_reversed)
            collect_over(link, *link.child, *link.parent);
    for (separator* link : links)
        if (link->parent->is_active && link->child->is_reversed)
            collect_over(*link, *link->parent, *link->child);
}

void message_passing::normalize_root() {
    const std::span<double> numbers = root_.weights();
    const double constant = equilibrium_ == q_equilibrium_sum
                                ? sum_of(numbers.data(), numbers.size())
                                : magnitudes_of(numbers.data(), numbers.size()).largest;
    require_exact(constant);
    require(constant < std::numeric_limits<double>::max(), q_error_overflow);
    divide(in_.tree, root_, constant);
}

void message_passing::distribute() {
    for (clique* next = &root_; next->to_parent != nullptr; next = next->to_parent->parent)
        distribute_over(*next->to_parent, *next, *next->to_parent->parent);
    for (separator* link : in_.tree.separators)
        if (!link->child->is_reversed) distribute_over(*link, *link->parent, *link->child);
}

// What goes on is divided by its largest entry. The separator keeps the marginal as it is, to divide by later.
void message_passing::collect_over(separator& link, clique& from, clique& to) {
    take_marginal(link, from);
    const double largest = magnitudes_of(marginal_.data(), marginal_.size()).largest;
    require_exact(largest);
    if (largest < small) {
        divide(in_.tree, from, largest);
        std::ranges::transform(marginal_, marginal_.begin(), [&](double p) { return p / largest; });
    }
    divide_by_last(link);
    const double scale = magnitudes_of(link.table.data(), link.table.size()).largest;
    require(scale > 0, q_error_inconsistency_or_underflow);
    std::ranges::transform(link.table, link.table.begin(), [&](double p) { return p / scale; });
    count_in(in_.tree, scale);
    const table_map& map = &from == link.child ? link.in_parent : link.in_child;
    multiply_into(in_, to, map, link.table.span());
    exchange_utilities(link, map, to);
    store_marginal(link);
    to.is_active = true;
}

void message_passing::distribute_over(separator& link, clique& from, clique& to) {
    take_marginal(link, from);
    const double smallest = divide_by_last(link);
    const table_map& map = &from == link.child ? link.in_parent : link.in_child;
    if (in_.tree.is_extensible) expect_factor(in_.tree, to, smallest);
    multiply(map, to.weights().data(), link.table.data(), in_.workers);
    exchange_utilities(link, map, to);
    store_marginal(link);
}

void message_passing::take_marginal(separator& link, clique& from) {
    const std::size_t size = link.table.size();
    marginal_ = in_.forest.scratch.span().first(size);
    utilities_ = in_.forest.scratch.span().subspan(size, link.utilities.size());
    const bool goes_up = &from == link.child;
    const table_map& map = goes_up ? link.in_child : link.in_parent;
    if (mode_ == q_mode_fast_retraction)
        take_retracted_marginal(goes_up ? link.weighted->in_child : link.weighted->in_parent,
                                link.discrete_members(), from);
    else if (!utilities_.empty())
        pair_marginal(*map.loops(), from.weights().data(), from.utilities.data(), marginal_.data(),
                      utilities_.data(), in_.workers);
    else if (equilibrium_ == q_equilibrium_sum)
        sum_marginal(map, from.weights().data(), marginal_.data(), in_.workers);
    else
        max_marginal(map, from.weights().data(), marginal_.data(), in_.workers);
}

// No evidence is in the tables: what is removed takes its weights along. An entry that they make 0 could never come back.
void message_passing::take_retracted_marginal(const weighted_plan& plan, std::span<node* const> kept,
                                              clique& from) {
    list_weights(in_.forest, from, kept, weights_);
    (equilibrium_ == q_equilibrium_sum ? out_sum_marginal : out_max_marginal)(
        plan, from.weights().data(), weights_, marginal_.data(), in_.workers);
}

// The quotient stands in the separator afterwards. Returns its smallest positive entry.
double message_passing::divide_by_last(separator& link) {
    if (mode_ == q_mode_fast_retraction)
        for (std::size_t i = 0; i < marginal_.size(); ++i)
            require(marginal_[i] > 0 || !(link.table[i] > 0), q_error_fast_retraction);
    const double total = ratio(link.table.data(), marginal_.data(), marginal_.size());
    require(total <= largest_ratio, q_error_inconsistency_or_underflow);
    return magnitudes_of(link.table.data(), link.table.size()).smallest_positive;
}

void message_passing::exchange_utilities(separator& link, const table_map& map, clique& to) {
    if (utilities_.empty()) return;
    std::ranges::transform(utilities_, link.utilities, link.utilities.begin(), std::minus<>());
    add(*map.loops(), to.utilities.data(), link.utilities.data(), in_.workers);
    std::ranges::copy(utilities_, link.utilities.begin());
}

void message_passing::store_marginal(separator& link) noexcept {
    std::ranges::copy(marginal_, link.table.begin());
}

void pass_messages(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode, clique* root) {
    message_passing(in, equilibrium, mode, root != nullptr ? *root : meeting_point(in.tree)).run();
    for (clique* told : in.tree.cliques) told->is_active = false;
}

void list_weights(const junction_forest& forest, const clique& from, std::span<node* const> kept,
                  std::vector<const double*>& weights) {
    weights.clear();
    for (const node* member : from.discrete_members()) {
        if (std::ranges::find(kept, member) != kept.end()) continue;
        const compiled_node& removed = forest.of(*member);
        weights.push_back(removed.propagated_index == findings::none
                              ? nullptr
                              : forest.retraction_weights.data() + removed.first_state);
    }
}

void plan_retraction(junction_forest& forest, junction_tree& tree) {
    if (forest.retraction_weights.empty()) forest.retraction_weights = forest.propagated_weights.copy();
    for (separator* link : tree.separators) {
        if (link->weighted != nullptr) continue;
        const auto kept = link->discrete_members();
        auto plans = std::make_unique<weighted_plans>();
        plans->in_parent = make_weighted_plan(link->parent->discrete_members(), kept);
        plans->in_child = make_weighted_plan(link->child->discrete_members(), kept);
        link->weighted = std::move(plans);
    }
    for (node* member : tree.nodes)
        if (compiled_node& read = forest.of(*member); read.weighted_in_best == nullptr)
            read.weighted_in_best = std::make_unique<weighted_plan>(
                make_weighted_plan(read.best->discrete_members(), {&read.owner, 1}));
}

}  // namespace quarn
