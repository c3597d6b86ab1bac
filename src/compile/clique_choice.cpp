#include "clique_choice.h"

#include <algorithm>
#include <utility>

#include "table.h"

namespace quarn {
namespace {

using place = node* const*;

place position_of(const clique& searched, const node& member) noexcept {
    const std::size_t discrete = searched.discrete_members().size();
    const place first = searched.members.begin() + (member.is_discrete() ? 0 : discrete);
    const place last = member.is_discrete() ? searched.members.begin() + discrete : searched.members.end();
    return std::ranges::lower_bound(first, last, member.vertex, {}, &node::vertex);
}

// The size of the clique, then that of the part of its table's nodes that comes before the member.
using cost = std::pair<table_size, std::size_t>;

cost reading_cost(const clique& read, const node& member) noexcept {
    const std::span<node* const> before(read.members.begin(), position_of(read, member));
    return {read.size, configurations(before.first(std::min(before.size(), read.discrete_members().size())))};
}

}  // namespace

bool holds(const clique& tested, const node& member) noexcept {
    const place found = position_of(tested, member);
    return found != tested.members.end() && *found == &member;
}

clique_index::clique_index(const junction_forest& forest)
    : forest_(forest), cliques_of_(forest.vertex_count) {
    for (const auto& indexed : forest.cliques)
        for (const node* member : indexed->members) cliques_of_[member->vertex].push_back(indexed.get());
}

clique& clique_index::smallest_with(std::span<node* const> nodes) const noexcept {
    if (nodes.empty())
        return **std::ranges::min_element(forest_.cliques, {},
                                          [](const auto& tested) { return tested->size; });
    const node* const rarest = *std::ranges::min_element(
        nodes, {}, [&](const node* member) { return cliques_of_[member->vertex].size(); });
    clique* smallest = nullptr;
    for (clique* tested : cliques_of_[rarest->vertex])
        if ((smallest == nullptr || tested->size < smallest->size) &&
            std::ranges::all_of(nodes, [&](const node* member) { return holds(*tested, *member); }))
            smallest = tested;
    return *smallest;
}

clique& best_clique(const compiled_node& sought) {
    struct step {
        clique* reached;
        const clique* from;
    };
    std::vector<step> steps{{sought.home, nullptr}};
    clique* best = sought.home;
    cost lowest = reading_cost(*best, *sought.owner);
    for (std::size_t next = 0; next < steps.size(); ++next) {
        const auto [reached, from] = steps[next];
        if (const cost found = reading_cost(*reached, *sought.owner); found < lowest) {
            best = reached;
            lowest = found;
        }
        for (clique* neighbor : reached->neighbors)
            if (neighbor != from && holds(*neighbor, *sought.owner)) steps.push_back({neighbor, reached});
    }
    return *best;
}

}  // namespace quarn
