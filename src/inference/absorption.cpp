#include "absorption.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

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
        const double weight = entered.weight(state), quotient = weight / propagated.weight(state);
        if (weight > 0 && !(quotient >= smallest_exact && std::isfinite(quotient))) return false;
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
    for (std::size_t state = 0; state < factors.size(); ++state) {
        factors[state] /= largest;
        if (entered.weight(state) > 0 && factors[state] < smallest_exact) in.tree.is_extensible = false;
    }
    count_in(in.tree, largest);
    multiply_into(in, *changed.best, changed.in_best, factors);
}

void take_over(const tree_context& in, compiled_node& changed) noexcept {
    const findings& entered = changed.owner->evidence;
    const std::span<double> weights = in.forest.states_of(changed, in.forest.propagated_weights);
    for (std::size_t state = 0; state < weights.size(); ++state) weights[state] = entered.weight(state);
    changed.propagated_index = entered.index;
}

void weigh_for_retraction(const tree_context& in, compiled_node& changed) noexcept {
    const std::span<double> weights = in.forest.states_of(changed, in.forest.propagated_weights);
    const double largest = *std::ranges::max_element(weights);
    std::ranges::transform(weights, in.forest.states_of(changed, in.forest.retraction_weights).begin(),
                           [&](double weight) { return largest > 0 ? weight / largest : 0; });
}

// The values to be observed, those first that are nearest to the root: the others then depend on no node that is not.
std::vector<compiled_node*> values_to_absorb(const tree_context& in) {
    std::vector<compiled_node*> observed;
    for (node* member : in.tree.nodes)
        if (member->is_continuous() && member->value_is_entered && has_evidence_to_propagate(*member))
            observed.push_back(&in.forest.of(*member));
    std::ranges::stable_sort(observed, std::greater(), [](const compiled_node* n) { return n->top->number; });
    return observed;
}

}  // namespace

bool extends_propagated(const junction_forest& forest, const junction_tree& tree) noexcept {
    return std::ranges::all_of(tree.nodes, [&](const node* member) { return extends(forest, *member); });
}

bool decisions_changed(const junction_forest& forest, const junction_tree& tree) noexcept {
    if (tree.root->members[0]->domain->counts.of_category(q_category_decision) == 0) return false;
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
        if (mode == q_mode_fast_retraction) weigh_for_retraction(in, changed);
        changed.best->is_active = true;
    }
}

void absorb_findings_as_logarithms(const tree_context& in) {
    for (node* member : in.tree.nodes) {
        if (!member->is_discrete() || !has_evidence_to_propagate(*member)) continue;
        compiled_node& changed = in.forest.of(*member);
        take_over(in, changed);
        add_logarithms(in, *changed.best, changed.in_best,
                       in.forest.states_of(changed, in.forest.propagated_weights));
    }
}

void absorb_values(const tree_context& in) {
    if (values_to_absorb(in).empty()) return;
    log_weights weights(in);
    weights.take();
    absorb_values(in, weights);
    weights.restore();
}

void absorb_values(const tree_context& in, log_weights& weights) {
    for (compiled_node* next : values_to_absorb(in)) {
        const double value = next->owner->entered_value;
        const bool excludes = observe(in, *next, value);
        next->value_is_propagated = true;
        next->propagated_value = value;
        if (excludes) weights.calibrate();
    }
}

}  // namespace quarn
