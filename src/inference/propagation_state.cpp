#include "propagation_state.h"

#include <algorithm>

#include "errors.h"
#include "evidence.h"
#include "table_slices.h"

namespace quarn {
namespace {

const junction_forest& forest_with(const junction_tree& asked) {
    return required_forest(*asked.root->members[0]->domain);
}

bool has_evidence_to_propagate(const junction_forest& forest, const junction_tree& asked) noexcept {
    const bool is_counted = asked.equilibrium != q_equilibrium_none;
    return (is_counted ? asked.changed_evidence : changed_evidence(forest, asked)) > 0 ||
           has_stale_slice(forest, asked);
}

void require_equilibrium(q_equilibrium_t wanted) {
    require(wanted == q_equilibrium_sum || wanted == q_equilibrium_max);
}

void require_mode(q_mode_t wanted) { require(wanted == q_mode_normal || wanted == q_mode_fast_retraction); }

void require_propagated(const junction_tree& asked) {
    require(asked.equilibrium != q_equilibrium_none, q_error_no_equilibrium);
}

bool is_in_mode(const junction_tree& asked, q_mode_t wanted) noexcept {
    return asked.mode == wanted || !asked.evidence_is_propagated;
}

}  // namespace

bool has_evidence_to_propagate(const domain& asked) {
    const junction_forest& forest = required_forest(asked);
    return std::ranges::any_of(forest.trees,
                               [&](const auto& tree) { return has_evidence_to_propagate(forest, *tree); });
}

bool has_evidence_to_propagate(const junction_tree& asked) {
    return has_evidence_to_propagate(forest_with(asked), asked);
}

bool any_tree_has(const domain& asked, tree_flag wanted) {
    return std::ranges::any_of(required_forest(asked).trees,
                               [&](const auto& tree) { return (*tree).*wanted; });
}

bool tree_has(const junction_tree& asked, tree_flag wanted) {
    forest_with(asked);
    return asked.*wanted;
}

bool equilibrium_is(const domain& asked, q_equilibrium_t wanted) {
    require_equilibrium(wanted);
    return std::ranges::all_of(required_forest(asked).trees,
                               [&](const auto& tree) { return tree->equilibrium == wanted; });
}

bool equilibrium_is(const junction_tree& asked, q_equilibrium_t wanted) {
    require_equilibrium(wanted);
    forest_with(asked);
    return asked.equilibrium == wanted;
}

bool evidence_mode_is(const domain& asked, q_mode_t wanted) {
    require_mode(wanted);
    const auto& trees = required_forest(asked).trees;
    for (const auto& tree : trees) require_propagated(*tree);
    return std::ranges::all_of(trees, [&](const auto& tree) { return is_in_mode(*tree, wanted); });
}

bool evidence_mode_is(const junction_tree& asked, q_mode_t wanted) {
    require_mode(wanted);
    forest_with(asked);
    require_propagated(asked);
    return is_in_mode(asked, wanted);
}

}  // namespace quarn
