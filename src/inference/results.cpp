#include "results.h"

#include <cmath>

#include "errors.h"
#include "evidence.h"

namespace quarn {
namespace {

void require_equilibrium(const junction_tree& tree) {
    require(tree.equilibrium != q_equilibrium_none, q_error_no_equilibrium);
}

// Whether the beliefs are probabilities given all the evidence.
bool holds_posteriors(const junction_tree& tree) noexcept {
    return tree.equilibrium == q_equilibrium_sum &&
           (tree.mode == q_mode_normal || !tree.evidence_is_propagated);
}

}  // namespace

bool holds_posteriors(const node& asked) { return holds_posteriors(*propagated_node(asked).tree); }

const junction_forest& propagated_forest(const domain& asked) {
    const junction_forest& forest = required_forest(asked);
    for (const auto& tree : forest.trees) require_equilibrium(*tree);
    return forest;
}

double belief(const node& asked, std::size_t state) {
    require_state(asked, state);
    return beliefs_of(asked)[state];
}

std::span<const double> beliefs_of(const node& discrete) {
    const compiled_node& own = propagated_node(discrete);
    return junction_forest::states_of(own, forest_of(*own.owner->domain)->beliefs);
}

mean_and_variance continuous_moments(const node& asked) {
    require(asked.is_continuous());
    const compiled_node& own = propagated_node(asked);
    return {own.mean, own.variance};
}

mean_and_variance numeric_marginal(const node& asked) {
    require(asked.has_values());
    require(holds_posteriors(asked));
    return numeric_moments(asked, beliefs_of(asked));
}

double function_value(const node& asked) {
    require(asked.is_real_function());
    (void)required_forest(*asked.domain);
    require(asked.value_failure == q_error_none, asked.value_failure);
    return asked.value;
}

const compiled_utility& utility_results(const node& asked) {
    require(asked.is_utility());
    const node& source = asked.linked != nullptr ? *asked.linked : asked;
    const compiled_utility& own = required_forest(*source.domain).utilities[source.vertex];
    require_equilibrium(*own.tree);
    return own;
}

double expected_utility(const node& asked, std::size_t state) {
    if (asked.is_utility()) {
        require(state == 0);
        return utility_results(asked).expected;
    }
    require_state(asked, state);
    const compiled_node& own = propagated_node(asked);
    const junction_forest& forest = *forest_of(*own.owner->domain);
    if (!forest.expected_utilities.empty()) return forest.states_of(own, forest.expected_utilities)[state];
    require(holds_posteriors(*own.tree));
    return 0;
}

double expected_utility(const domain& asked) {
    const junction_forest& forest = required_forest(asked);
    if (forest.utilities.empty())
        for (const auto& tree : propagated_forest(asked).trees) require(holds_posteriors(*tree));
    double sum = 0;
    for (const compiled_utility& utility : forest.utilities) sum += utility_results(*utility.owner).expected;
    return sum;
}

double normalization_constant(const domain& asked) {
    double product = 1;
    for (const auto& tree : propagated_forest(asked).trees) product *= tree->normalization;
    // The product may have lost digits, or all, among the smallest numbers.
    const double exponential = std::exp(log_normalization_constant(asked));
    return std::abs(product - exponential) <= 1e-9 * exponential ? product : exponential;
}

double log_normalization_constant(const domain& asked) {
    double sum = 0;
    for (const auto& tree : propagated_forest(asked).trees) sum += tree->log_normalization;
    return sum;
}

}  // namespace quarn
