#include "table_slices.h"

#include <algorithm>

#include "errors.h"
#include "loop_levels.h"
#include "walk.h"

namespace quarn {
namespace {

bool is_excluded(const junction_forest& forest, const node& member) noexcept {
    return member.has_kind() && member.vertex >= forest.vertex_count;
}

// The configuration of the excluded nodes of a table, the last one varying fastest; -1 when one is not instantiated.
std::ptrdiff_t excluded_configuration(const junction_forest& forest, const table& whole) noexcept {
    std::ptrdiff_t configuration = 0;
    for (const node* member : whole.nodes) {
        if (!is_excluded(forest, *member)) continue;
        if (member->evidence.index < 0) return -1;
        configuration =
            configuration * static_cast<std::ptrdiff_t>(member->state_count) + member->evidence.index;
    }
    return configuration;
}

// Calls visit(position in the whole table, position in the slice) for the entries that belong together.
template <class Visit>
void walk_slice(const junction_forest& forest, const table& whole, const table& slice, const Visit& visit) {
    const std::span<node* const> nodes(whole.nodes.begin(), whole.discrete_count);
    loop_levels levels = make_levels(nodes, {slice.nodes.begin(), slice.discrete_count});
    std::vector<std::ptrdiff_t> states;
    for (const node* member : nodes)
        states.push_back(is_excluded(forest, *member) ? member->evidence.index : not_fixed);
    const std::size_t start = simplify(levels, states);
    compress(levels);
    walk(levels, start, 0, visit);
}

}  // namespace

bool has_stale_slice(const junction_forest& forest, const junction_tree& tree) noexcept {
    if (forest.excluded().empty()) return false;
    const auto is_stale = [&](const table& whole, std::ptrdiff_t configuration) {
        return configuration != excluded_configuration(forest, whole);
    };
    const auto has_stale = [&](const std::vector<assigned_table>& tables) {
        return std::ranges::any_of(tables, [&](const assigned_table& assigned) {
            return assigned.slice != nullptr && is_stale(*assigned.whole, assigned.slice_configuration);
        });
    };
    return std::ranges::any_of(tree.cliques,
                               [&](const clique* holder) {
                                   return has_stale(holder->tables) || has_stale(holder->utility_tables);
                               }) ||
           std::ranges::any_of(tree.excluded, [&](const compiled_node* excluded) {
               return excluded->home == nullptr &&
                      is_stale(*excluded->owner->own_table, excluded->number_configuration);
           });
}

void update_slice(const junction_forest& forest, assigned_table& assigned) {
    if (assigned.slice == nullptr) return;
    table& whole = *assigned.whole;
    const std::ptrdiff_t configuration = excluded_configuration(forest, whole);
    require(configuration >= 0, q_error_invalid_evidence);
    whole.materialise();
    assigned.slice->materialise();
    table& slice = *assigned.slice;
    const std::size_t block = whole.block_size();
    walk_slice(forest, whole, slice, [&](std::size_t from, std::size_t to) noexcept {
        slice.data[to] = whole.data[from];
        std::copy_n(whole.moments.data() + from * block, block, slice.moments.data() + to * block);
    });
    assigned.slice_configuration = configuration;
}

void store_slice(const junction_forest& forest, const assigned_table& assigned) {
    if (assigned.slice == nullptr) return;
    number_array& whole = assigned.whole->data;
    walk_slice(forest, *assigned.whole, *assigned.slice,
               [&](std::size_t to, std::size_t from) noexcept { whole[to] = assigned.slice->data[from]; });
}

double remaining_number(const junction_forest& forest, compiled_node& excluded) {
    table& whole = *excluded.owner->own_table;
    whole.materialise();
    excluded.number_configuration = excluded_configuration(forest, whole);
    return whole.data[static_cast<std::size_t>(excluded.number_configuration)];
}

}  // namespace quarn
