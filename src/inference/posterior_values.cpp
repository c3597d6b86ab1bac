#include "posterior_values.h"

#include <algorithm>

#include "errors.h"
#include "evidence.h"
#include "results.h"
#include "states.h"

namespace quarn {
namespace {

double value_of_function(const node& function) {
    require(function.value_failure == q_error_none, function.value_failure);
    return function.value;
}

std::size_t entered_state(const node& excluded) {
    require(excluded.evidence.index >= 0, q_error_computation_failed);
    return static_cast<std::size_t>(excluded.evidence.index);
}

// The state that a node is observed or bound to be in.
std::optional<std::size_t> known_state(const node& discrete) {
    if (is_settled(discrete)) return entered_state(discrete);
    const int64_t propagated = propagated_node(discrete).propagated_index;
    if (propagated >= 0) return static_cast<std::size_t>(propagated);
    return certain_state(beliefs_of(discrete));
}

// Where the beliefs are no probabilities there is no mean.
mean_and_variance moments_of(const node& with_values) {
    try {
        return numeric_marginal(with_values);
    } catch (const failure& refused) {
        throw failure(refused.code() == q_error_usage ? q_error_computation_failed : refused.code());
    }
}

double quantile_of_states(const node& with_values, double level) {
    (void)moments_of(with_values);  // they are posteriors
    return numeric_quantile(with_values, beliefs_of(with_values), level);
}

// One node is in a given state, everything else as it is.
class values_given_state final : public posterior_values {
public:
    values_given_state(const node& given, std::size_t state) noexcept : given_(given), state_(state) {}

    value value_of(const node& referred) const override {
        return &referred == &given_ ? value_in_state(given_, state_) : posterior_values::value_of(referred);
    }
    std::size_t state_of(const node& discrete) const override {
        return &discrete == &given_ ? state_ : posterior_values::state_of(discrete);
    }

private:
    const node& given_;
    std::size_t state_;
};

bool is_about_distribution(const expression& reference) noexcept {
    return reference.parent != nullptr &&
           (reference.parent->op == q_operator_variance ||
            (reference.parent->op == q_operator_quantile && reference.place == 0));
}

// Null where all is certain. Fails where more than one node is not.
const node* uncertain_node(const expression& condition) {
    const node* found = nullptr;
    for (const expression* at = &condition; at != nullptr; at = next_in_tree(*at, condition)) {
        if (!at->is_reference() || is_about_distribution(*at)) continue;
        const node& referred = *at->node;
        const bool is_random = referred.is_discrete()
                                   ? !known_state(referred).has_value()
                                   : referred.is_continuous() && continuous_moments(referred).variance > 0;
        if (!is_random || found == &referred) continue;
        require(referred.is_discrete() && found == nullptr, q_error_computation_failed);
        found = &referred;
    }
    return found;
}

double settled_utility(const node& utility) {
    utility.own_table->materialise();
    std::size_t configuration = 0;
    for (const node* parent : utility.own_table->nodes)
        configuration = configuration * parent->state_count + entered_state(*parent);
    return utility.own_table->data[configuration];
}

}  // namespace

bool is_settled(const node& asked) noexcept {
    const std::size_t vertices = forest_of(*asked.domain)->vertex_count;
    const auto is_excluded = [&](const node* n) { return n->vertex >= vertices; };
    return asked.is_utility() ? std::ranges::all_of(asked.own_table->nodes, is_excluded)
                              : asked.has_kind() && is_excluded(&asked);
}

value posterior_values::value_of(const node& referred) const {
    if (referred.is_real_function()) return value_of_function(referred);
    if (referred.is_utility())
        return is_settled(referred) ? settled_utility(referred) : utility_results(referred).expected;
    if (referred.is_continuous()) return continuous_moments(referred).mean;
    if (const auto state = known_state(referred)) return value_in_state(referred, *state);
    require(referred.has_values(), q_error_computation_failed);
    return moments_of(referred).mean;
}

std::size_t posterior_values::state_of(const node& discrete) const {
    const auto state = known_state(discrete);
    require(state.has_value(), q_error_computation_failed);
    return *state;
}

double posterior_values::variance_of(const node& numeric) const {
    if (numeric.is_utility()) return is_settled(numeric) ? 0 : utility_results(numeric).variance;
    if (numeric.is_continuous()) return continuous_moments(numeric).variance;
    if (numeric.is_discrete()) return moments_of(numeric).variance;
    (void)value_of_function(numeric);
    return 0;
}

double posterior_values::quantile_of(const node& numeric, double level) const {
    if (numeric.is_discrete()) return quantile_of_states(numeric, level);
    require(variance_of(numeric) == 0, q_error_computation_failed);
    return std::get<double>(value_of(numeric));
}

double posterior_values::probability_of(const expression& condition) const {
    const node* const random = uncertain_node(condition);
    if (random == nullptr) return evaluate_boolean(condition, *this) ? 1 : 0;
    require(holds_posteriors(*random), q_error_computation_failed);
    const std::span<const double> beliefs = beliefs_of(*random);
    double fulfilled = 0, total = 0;
    for (std::size_t state = 0; state < beliefs.size(); ++state) {
        if (!(beliefs[state] > 0)) continue;
        total += beliefs[state];
        if (evaluate_boolean(condition, values_given_state(*random, state))) fulfilled += beliefs[state];
    }
    return fulfilled / total;
}

}  // namespace quarn
