#include "beliefs.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

#include "errors.h"
#include "kernels.h"
#include "message_passing.h"
#include "moments.h"

namespace quarn {
namespace {

class result_update {
public:
    result_update(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode) noexcept
        : in_(in), forest_(in.forest), equilibrium_(equilibrium), mode_(mode) {}

    void run() {
        for (node* member : in_.tree.nodes)
            if (member->is_discrete()) update_node(forest_.of(*member));
        if (in_.tree.has_continuous_nodes) distribute_moments(in_);
        for (clique* home : in_.tree.cliques)
            for (const assigned_table& assigned : home->utility_tables) update_utility(*home, assigned);
        for (compiled_node* excluded : in_.tree.excluded) update_excluded(*excluded);
    }

private:
    void update_node(compiled_node& updated) {
        const std::span<double> beliefs = forest_.states_of(updated, forest_.beliefs);
        const bool is_observed = mode_ == q_mode_normal && updated.propagated_index >= 0;
        if (!is_observed || in_.tree.has_utilities) {
            take_marginal(updated, beliefs);
            normalize(beliefs);
        }
        if (is_observed) observe_state(beliefs, updated.propagated_index);
    }

    static void observe_state(std::span<double> beliefs, int64_t state) noexcept {
        std::ranges::fill(beliefs, 0.0);
        beliefs[static_cast<std::size_t>(state)] = 1;
    }

    void take_marginal(compiled_node& updated, std::span<double> beliefs) {
        const double* const weights = updated.best->weights().data();
        if (mode_ == q_mode_fast_retraction)
            take_retracted_marginal(updated, beliefs);
        else if (in_.tree.has_utilities)
            pair_marginal(*updated.in_best.loops(), weights, updated.best->utilities.data(), beliefs.data(),
                          forest_.states_of(updated, forest_.expected_utilities).data(), in_.workers);
        else if (equilibrium_ == q_equilibrium_sum)
            sum_marginal(updated.in_best, weights, beliefs.data(), in_.workers);
        else
            max_marginal(updated.in_best, weights, beliefs.data(), in_.workers);
    }

    void take_retracted_marginal(compiled_node& updated, std::span<double> beliefs) {
        list_weights(forest_, *updated.best, {&updated.owner, 1}, weights_);
        (equilibrium_ == q_equilibrium_sum ? out_sum_marginal : out_max_marginal)(
            *updated.weighted_in_best, updated.best->weights().data(), weights_, beliefs.data(), in_.workers);
    }

    void normalize(std::span<double> beliefs) {
        const double constant = equilibrium_ == q_equilibrium_sum
                                    ? sum_of(beliefs.data(), beliefs.size())
                                    : magnitudes_of(beliefs.data(), beliefs.size()).largest;
        require(constant >= smallest_exact && constant < std::numeric_limits<double>::max(),
                q_error_normalization);
        std::ranges::for_each(beliefs, [&](double& belief) { belief /= constant; });
    }

    // With the probabilities of its parents' configurations.
    void update_utility(clique& home, const assigned_table& assigned) {
        const std::span<const double> values = assigned.numbers().data.span();
        const std::span<double> weights = forest_.scratch.span().first(values.size());
        sum_marginal(assigned.in_clique, home.weights().data(), weights.data(), in_.workers);
        compiled_utility& updated = forest_.utilities[assigned.owner->vertex];
        updated.minimum = std::numeric_limits<double>::infinity();
        updated.maximum = -updated.minimum;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!(weights[i] > 0)) continue;
            updated.minimum = std::min(updated.minimum, values[i]);
            updated.maximum = std::max(updated.maximum, values[i]);
        }
        const double total = sum_of(weights.data(), weights.size());
        if (!(total > 0)) {
            updated.expected = updated.variance = updated.minimum = updated.maximum =
                std::numeric_limits<double>::quiet_NaN();
            return;
        }
        updated.expected = std::inner_product(weights.begin(), weights.end(), values.begin(), 0.0) / total;
        if (updated.minimum == updated.maximum) updated.expected = updated.minimum;
        updated.variance =
            std::inner_product(weights.begin(), weights.end(), values.begin(), 0.0, std::plus<>(),
                               [&](double weight, double value) {
                                   const double deviation = value - updated.expected;
                                   return weight * deviation * deviation;
                               }) /
            total;
    }

    void update_excluded(compiled_node& updated) {
        observe_state(forest_.states_of(updated, forest_.beliefs), updated.propagated_index);
        if (!in_.tree.has_utilities) return;
        const std::span<double> utilities = forest_.states_of(updated, forest_.expected_utilities);
        std::ranges::fill(utilities, 0.0);
        const clique& root = *in_.tree.root;
        const std::span<double> weights = in_.tree.root->weights();
        utilities[static_cast<std::size_t>(updated.propagated_index)] =
            std::inner_product(weights.begin(), weights.end(), root.utilities.begin(), 0.0) /
            sum_of(weights.data(), weights.size());
    }

    tree_context in_;
    junction_forest& forest_;
    q_equilibrium_t equilibrium_;
    q_mode_t mode_;
    std::vector<const double*> weights_;  // of nodes that are removed
};

}  // namespace

void update_results(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode) {
    ++in.tree.results_count;
    result_update(in, equilibrium, mode).run();
}

}  // namespace quarn
