#include "absorption.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "errors.h"
#include "evidence.h"
#include "kernels.h"
#include "log_weights.h"
#include "moments.h"

namespace quarn {
namespace {

// Whether no state that the propagated evidence excludes is possible again, and all quotients are ordinary numbers.
bool extends(const findings_view& propagated, const findings_view& entered, std::size_t states) noexcept {
    if (propagated.index == findings::none) return true;
    if (propagated.index >= 0) return entered.index == propagated.index || states == 1;
    for (std::size_t state = 0; state < states; ++state) {
        const double weight = entered.weight(state), old = propagated.weight(state);
        if (weight > 0 && !(old > smallest_exact && std::isfinite(weight / old))) return false;
    }
    return true;
}

bool extends(const junction_forest& forest, const node& changed) noexcept {
    const compiled_node& compiled = forest.of(changed);
    if (changed.is_continuous()) return !compiled.value_is_propagated || !has_evidence_to_propagate(changed);
    return extends(forest.propagated(compiled), changed.evidence.view(), changed.state_count);
}

void multiply_in(const tree_context& in, compiled_node& changed) {
    const findings_view old = in.forest.propagated(changed);
    const findings& entered = changed.owner->evidence;
    const std::span<double> factors = in.forest.scratch.span().first(changed.owner->state_count);
    for (std::size_t state = 0; state < factors.size(); ++state) {
        const double weight = entered.weight(state);
        factors[state] = weight > 0 ? weight / old.weight(state) : 0;
    }
    const double largest = magnitudes_of(factors.data(), factors.size()).largest;
    require(largest > 0, q_error_inconsistency_or_underflow);
    std::ranges::for_each(factors, [&](double& factor) { factor /= largest; });
    count_in(in.tree, largest);
    multiply_into(in, *changed.best, changed.in_best, factors);
}

void take_over(const tree_context& in, compiled_node& changed) noexcept {
    const findings& entered = changed.owner->evidence;
    const std::span<double> weights = in.forest.states_of(changed, in.forest.propagated_weights);
    for (std::size_t state = 0; state < weights.size(); ++state) weights[state] = entered.weight(state);
    changed.propagated_index = entered.index;
}

}  // namespace

bool extends_propagated(const junction_forest& forest, const junction_tree& tree) noexcept {
    return std::ranges::all_of(tree.nodes, [&](const node* member) { return extends(forest, *member); });
}

bool decisions_changed(const junction_forest& forest, const junction_tree& tree) noexcept {
    return std::ranges::any_of(tree.nodes, [&](const node* member) {
        return member->is(q_category_decision) &&
               forest.of(*member).policy_is_left_out != (member->evidence.index != findings::none);
    });
}

void absorb_findings(const tree_context& in, q_mode_t mode) {
    for (node* member : in.tree.nodes) {
        if (!member->is_discrete() || !has_evidence_to_propagate(*member)) continue;
        compiled_node& changed = in.forest.of(*member);
        if (mode == q_mode_normal) multiply_in(in, changed);
        take_over(in, changed);
        changed.best->is_active = true;
    }
}

void absorb_values(const tree_context& in) {
    std::optional<log_weights> weights;
    for (node* member : in.tree.nodes) {
        if (!member->value_is_entered || !member->is_continuous() || !has_evidence_to_propagate(*member))
            continue;
        compiled_node& observed = in.forest.of(*member);
        if (!weights) weights.emplace(in);
        const bool excludes = observe(in, observed, member->entered_value);
        observed.value_is_propagated = true;
        observed.propagated_value = member->entered_value;
        if (excludes) weights->calibrate();
    }
    if (weights) weights->restore();
}

}  // namespace quarn
