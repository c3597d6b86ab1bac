#include "log_weights.h"

#include <algorithm>
#include <cmath>

#include "errors.h"

namespace quarn {
namespace {

constexpr double impossible = -std::numeric_limits<double>::infinity();

template <class Change>
void for_each_weight(junction_tree& tree, const Change& change) {
    const auto apply = [&](std::span<double> weights) {
        std::ranges::transform(weights, weights.begin(), change);
    };
    for (clique* holder : tree.cliques) apply(holder->weights());
    for (separator* link : tree.separators) apply(link->table.span());
}

}  // namespace

void log_weights::take() noexcept {
    for_each_weight(in_.tree, [](double weight) { return weight > 0 ? std::log(weight) : impossible; });
}

void log_weights::calibrate() {
    const std::vector<separator*>& links = in_.tree.separators;
    for (auto next = links.rbegin(); next != links.rend(); ++next) {
        separator& link = **next;
        send(link, link.in_child, *link.child, link.in_parent, *link.parent);
    }
    for (separator* link : links) send(*link, link->in_parent, *link->parent, link->in_child, *link->child);
}

void log_weights::send(separator& link, const table_map& in_sender, clique& from,
                       const table_map& in_receiver, clique& to) {
    const std::span<double> marginal = in_.forest.scratch.span().first(link.table.size());
    max_marginal(in_sender, from.weights().data(), marginal.data(), in_.workers);
    std::ranges::transform(marginal, link.table, link.table.begin(), [](double next, double last) {
        return next > impossible ? next - last : impossible;
    });
    add(in_receiver, to.weights().data(), link.table.data(), in_.workers);
    std::ranges::copy(marginal, link.table.begin());
}

void log_weights::restore() {
    calibrate();
    const double largest = *std::ranges::max_element(in_.tree.root->weights());
    require(largest > impossible, q_error_inconsistency_or_underflow);
    in_.tree.normalization *= std::exp(largest);
    in_.tree.log_normalization += largest;
    bool is_lost = false;
    for_each_weight(in_.tree, [&](double logarithm) {
        const double weight = std::exp(logarithm - largest);
        is_lost |= weight < smallest_exact && logarithm > impossible;
        return weight;
    });
    if (is_lost) in_.tree.is_extensible = false;
    for (clique* changed : in_.tree.cliques) {
        weights_changed(in_.tree, *changed);
        changed->is_active = true;
    }
}

}  // namespace quarn
