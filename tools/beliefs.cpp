#include "beliefs.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "tool_failure.h"

namespace tool {
namespace {

node_evidence collect_evidence(q_node_t node) {
    node_evidence collected{q_node_get_name(node), {}, {}, {}};
    const q_kind_t kind = q_node_get_kind(node);
    if (kind == q_kind_other || q_node_evidence_is_entered(node) == 0) return collected;
    if (kind == q_kind_continuous) {
        collected.value = q_node_get_entered_value(node);
        return collected;
    }
    if (const int64_t state = q_node_get_selected_state(node); state >= 0) {
        collected.state = state_names(node)[static_cast<size_t>(state)];
        return collected;
    }
    for (size_t state = 0; state < q_node_get_number_of_states(node); ++state)
        collected.weights.push_back(q_node_get_entered_finding(node, state));
    return collected;
}

constexpr double not_computed = std::numeric_limits<double>::quiet_NaN();

probability last_probability(const model& propagated) {
    const probability found{q_domain_get_log_normalization_constant(propagated.domain()),
                            q_domain_get_normalization_constant(propagated.domain())};
    if (q_error_code() != q_error_none) fail_with_library_error(propagated.file());
    return found;
}

// Propagates the evidence in the ordinary way, which gives its probability and tells if it is impossible.
model_beliefs compute_evidence(model& asked) {
    const q_error_t failure = asked.compute_what_can_be();
    const bool is_complete = failure == q_error_none;
    const probability of_evidence =
        is_complete ? last_probability(asked) : probability{not_computed, not_computed};
    model_beliefs result{asked.file(), {}, failure, of_evidence, q_mode_normal, {}, 0, {}, {}};
    for (const q_node_t node : asked.nodes())
        if (node_evidence entered = collect_evidence(node); entered.is_observed() || !entered.weights.empty())
            result.evidence.push_back(std::move(entered));
    return result;
}

bool has_utilities(const model& asked) {
    return std::ranges::any_of(asked.nodes(),
                               [](q_node_t node) { return q_node_get_category(node) == q_category_utility; });
}

double largest_utility(const model& asked) {
    double largest = 0;
    for (const q_node_t node : asked.nodes()) {
        if (q_node_get_category(node) != q_category_utility) continue;
        const q_table_t table = q_node_get_table(node);
        for (const double utility : std::span(q_table_get_data(table), q_table_get_size(table)))
            largest = std::max(largest, std::abs(utility));
    }
    return largest;
}

// Nothing where numbers have no meaning, or no results yet.
std::optional<mean_and_variance> moments_of(q_node_t node) {
    const bool is_continuous = q_node_get_kind(node) == q_kind_continuous;
    const mean_and_variance found =
        is_continuous ? mean_and_variance{q_node_get_mean(node), q_node_get_variance(node)}
                      : mean_and_variance{q_node_get_numeric_mean(node), q_node_get_numeric_variance(node)};
    return q_error_code() == q_error_none ? std::optional(found) : std::nullopt;
}

// Why nothing can be read of a node.
q_error_t failure_of(q_node_t node) {
    if (q_node_get_kind(node) == q_kind_discrete)
        q_node_get_belief(node, 0);
    else if (q_node_get_kind(node) == q_kind_continuous)
        q_node_get_mean(node);
    else if (q_node_get_category(node) == q_category_utility)
        q_node_get_expected_utility(node, 0);
    else
        q_node_get_value(node);
    return q_error_code();
}

node_beliefs collect_node(q_node_t node, bool with_utilities, q_error_t domain_failure) {
    node_beliefs collected = describe(node);
    if (const q_error_t failure = failure_of(node); failure != q_error_none) {
        collected.failure = in_words(failure == q_error_no_equilibrium ? domain_failure : failure);
        return collected;
    }
    for (size_t state = 0; state < collected.states.size(); ++state) {
        collected.beliefs.push_back(q_node_get_belief(node, state));
        if (with_utilities)
            collected.expected_utilities.push_back(
                collected.beliefs.back() > 0 ? q_node_get_expected_utility(node, state) : not_computed);
    }
    collected.moments = moments_of(node);
    if (collected.category == q_category_utility)
        collected.expected_utilities.push_back(q_node_get_expected_utility(node, 0));
    else if (q_node_get_kind(node) == q_kind_other)
        collected.value = q_node_get_value(node);
    return collected;
}

void require_discrete_chance(const model& asked, const char* what) {
    for (const q_node_t node : asked.nodes())
        if (q_node_get_category(node) != q_category_chance || q_node_get_kind(node) != q_kind_discrete)
            throw command_failure(asked.file() + ": " + what +
                                  " is for discrete chance nodes only, but node " + q_node_get_name(node) +
                                  " is " + sort_of(node));
}

// Whether other states may be as good, but for rounding errors.
bool is_tied(q_node_t node, size_t best) {
    constexpr double nearly_one = 1 - 1e-9;
    for (size_t state = 0; state < q_node_get_number_of_states(node); ++state)
        if (state != best && q_node_get_belief(node, state) > nearly_one) return true;
    return false;
}

// Zeros for all other states leave what weight this one has.
void fix_state(const model& asked, q_node_t node, size_t fixed) {
    for (size_t state = 0; state < q_node_get_number_of_states(node); ++state)
        if (state != fixed && q_node_enter_finding(node, state, 0) != q_error_none)
            fail_with_library_error(asked.file());
}

}  // namespace

node_beliefs describe(q_node_t node) {
    node_beliefs described{q_node_get_name(node), q_node_get_label(node), q_node_get_category(node)};
    described.entered = collect_evidence(node);
    if (q_node_get_kind(node) != q_kind_discrete) return described;
    described.states = state_names(node);
    for (size_t state = 0; state < described.states.size(); ++state)
        described.labels.emplace_back(q_node_get_state_label(node, state));
    return described;
}

model_beliefs compute_beliefs(model& asked, const std::vector<q_node_t>& shown, q_mode_t mode) {
    if (mode == q_mode_fast_retraction) require_discrete_chance(asked, "fast retraction");
    model_beliefs result = compute_evidence(asked);
    result.mode = mode;
    if (mode == q_mode_fast_retraction) asked.compute(q_equilibrium_sum, mode);
    const bool with_utilities = has_utilities(asked);
    if (with_utilities) {
        result.expected_utility = q_domain_get_expected_utility(asked.domain());
        if (q_error_code() != q_error_none) result.expected_utility = not_computed;
    }
    result.largest_utility = largest_utility(asked);
    for (const q_node_t node : shown)
        result.nodes.push_back(collect_node(node, with_utilities, result.failure));
    return result;
}

void require_all_computed(const model_beliefs& result) {
    if (result.failure == q_error_none) return;
    throw command_failure(
        result.model +
        ": a discrete function, and what depends on it, could not be computed: " + in_words(result.failure));
}

model_beliefs compute_configuration(model& asked, const std::vector<q_node_t>& shown) {
    require_discrete_chance(asked, "--max");
    model_beliefs result = compute_evidence(asked);
    for (const q_node_t node : shown) result.nodes.push_back(describe(node));
    asked.compute(q_equilibrium_max);
    // The best states of several nodes need not go together while one of them has others that are as good.
    for (const q_node_t node : asked.nodes()) {
        const size_t best = most_probable_state(node);
        if (!is_tied(node, best)) continue;
        fix_state(asked, node, best);
        asked.compute(q_equilibrium_max);
    }
    for (size_t i = 0; i < shown.size(); ++i) result.nodes[i].configured = most_probable_state(shown[i]);
    result.of_configuration = last_probability(asked);
    return result;
}

}  // namespace tool
