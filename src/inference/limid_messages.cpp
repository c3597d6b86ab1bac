#include "limid_messages.h"

#include <algorithm>

#include "kernels.h"

namespace quarn {

limid_messages::limid_messages(const tree_context& in, std::span<const open_decision> decisions)
    : in_(in), decisions_(decisions), up_(in.forest.cliques.size() + 1), down_(up_.size()) {
    std::size_t largest = 0;
    for (const clique* holder : in.tree.cliques) largest = std::max(largest, holder->size.configurations);
    work_ = number_array(saturating_product(largest, 2));
}

clique_tables limid_messages::collect(const open_decision& asked) {
    std::vector<step> missing;
    const auto add_steps_into = [&](clique& target, const clique* except) {
        for (clique* neighbor : target.neighbors)
            if (neighbor != except && !sent({neighbor, &target}).is_valid)
                missing.push_back({neighbor, &target});
    };
    add_steps_into(*asked.home, nullptr);
    for (std::size_t next = 0; next < missing.size(); ++next) {
        const step along = missing[next];
        add_steps_into(*along.from, along.to);
    }
    std::for_each(missing.rbegin(), missing.rend(), [&](const step& along) { send(along); });
    const clique_tables tables = combine(*asked.home, nullptr, asked.decision);
    require_exact(magnitudes_of(tables.probabilities.data(), tables.probabilities.size()).largest);
    return tables;
}

// What depends on an invalid message is invalid too.
void limid_messages::invalidate(const open_decision& changed) {
    std::vector<step> told;
    const auto add_steps_from = [&](clique& source, const clique* except) {
        for (clique* neighbor : source.neighbors)
            if (neighbor != except && sent({&source, neighbor}).is_valid) told.push_back({&source, neighbor});
    };
    add_steps_from(*changed.home, nullptr);
    for (std::size_t next = 0; next < told.size(); ++next) {
        const step along = told[next];
        sent(along).is_valid = false;
        add_steps_from(*along.to, along.from);
    }
}

separator& limid_messages::link_of(const step& along) noexcept {
    separator* const up = along.from->to_parent;
    return up != nullptr && up->parent == along.to ? *up : *along.to->to_parent;
}

limid_messages::message& limid_messages::sent(const step& along) noexcept {
    const separator& link = link_of(along);
    return (along.from == link.child ? up_ : down_)[link.child->number];
}

clique_tables limid_messages::combine(clique& target, const clique* except_from, const node* except_policy) {
    const std::size_t size = target.size.configurations;
    const clique_tables tables{work_.span().first(size), work_.span().subspan(size, size)};
    std::ranges::copy(target.weights(), tables.probabilities.begin());
    std::ranges::copy(target.utilities, tables.utilities.begin());
    for (clique* neighbor : target.neighbors) {
        if (neighbor == except_from) continue;
        const separator& link = link_of({neighbor, &target});
        const loop_plan& plan = *(neighbor == link.child ? link.in_parent : link.in_child).loops();
        const message& received = sent({neighbor, &target});
        multiply(plan, tables.probabilities.data(), received.probabilities.data(), in_.workers);
        add(plan, tables.utilities.data(), received.utilities.data(), in_.workers);
    }
    for (const open_decision& other : decisions_)
        if (other.home == &target && other.decision != except_policy)
            multiply(*other.policy->in_clique.loops(), tables.probabilities.data(),
                     other.policy->numbers().data.data(), in_.workers);
    return tables;
}

// Only the proportions of the probabilities matter.
void limid_messages::send(const step& along) {
    const clique_tables tables = combine(*along.from, along.to, nullptr);
    const separator& link = link_of(along);
    message& filled = sent(along);
    if (filled.probabilities.empty()) {
        filled.probabilities = number_array(link.size.configurations);
        filled.utilities = number_array(link.size.configurations);
    }
    pair_marginal(*(along.from == link.child ? link.in_child : link.in_parent).loops(),
                  tables.probabilities.data(), tables.utilities.data(), filled.probabilities.data(),
                  filled.utilities.data(), in_.workers);
    const double largest = magnitudes_of(filled.probabilities.data(), filled.probabilities.size()).largest;
    require_exact(largest);
    std::ranges::for_each(filled.probabilities, [&](double& p) { p /= largest; });
    filled.is_valid = true;
}

}  // namespace quarn
