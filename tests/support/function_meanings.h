// What a function node yields, by recursion from what the library tells of its parents: from the very numbers, so that a
// comparison on the brink has one outcome.
#pragma once
#include <cmath>
#include <limits>

#include "expression_value.h"
#include "network_building.h"

namespace meanings {

using oracle::outcome;

// The result of a call that has just returned. Numbers that are no posteriors are no values.
inline outcome told(double result) {
    const q_error_t code = q_error_code();
    return {code == q_error_usage ? q_error_computation_failed : code, result};
}
inline outcome none() { return {q_error_computation_failed}; }

inline bool is_real_function(q_node_t node) {
    return q_node_get_category(node) == q_category_function && q_node_get_kind(node) == q_kind_other;
}
inline bool has_numbers(q_node_t node) {
    return q_node_get_kind(node) == q_kind_discrete && q_node_get_subtype(node) >= q_subtype_number;
}

// The bounds of a state of a numbered or interval node; the same of a number.
struct range {
    double lower, upper;
    bool reaches_down() const { return lower <= -std::numeric_limits<double>::max(); }
    bool reaches_up() const { return upper >= std::numeric_limits<double>::max(); }
    double middle() const { return reaches_down() ? upper : reaches_up() ? lower : (lower + upper) / 2; }
};
inline range range_of(q_node_t node, std::size_t state) {
    const bool spread = q_node_get_subtype(node) == q_subtype_interval;
    return {q_node_get_state_value(node, state), q_node_get_state_value(node, spread ? state + 1 : state)};
}
inline bool increases(q_node_t node) {
    const std::size_t states = q_node_get_number_of_states(node);
    bool valid = true;
    for (std::size_t s = 0; s < states; ++s) {
        const range here = range_of(node, s);
        if (q_node_get_subtype(node) == q_subtype_interval) valid = valid && here.lower < here.upper;
        if (s > 0) valid = valid && range_of(node, s - 1).lower < here.lower;
    }
    return valid;
}

inline outcome in_state(q_node_t node, double state) {
    const auto s = std::size_t(state);
    if (q_node_get_subtype(node) == q_subtype_label) return {q_error_none, q_node_get_state_label(node, s)};
    if (q_node_get_subtype(node) == q_subtype_boolean) return {q_error_none, s == 1};
    const range first = range_of(node, 0);
    if (!increases(node) || (first.reaches_down() && first.reaches_up()))
        return {q_error_invalid_state_values};
    return {q_error_none, range_of(node, s).middle()};
}

// The certain state.
inline outcome state_of(q_node_t node) {
    outcome found = none();
    std::size_t possible = 0;
    for (std::size_t s = 0; s < q_node_get_number_of_states(node); ++s) {
        const outcome belief = told(q_node_get_belief(node, s));
        if (belief.code != q_error_none) return belief;
        if (std::get<double>(belief.value) > 0 && ++possible == 1) found = {q_error_none, double(s)};
    }
    return possible == 1 ? found : none();
}

// One that depends on nothing is known whatever became of the trees.
inline bool is_constant(q_node_t node) {
    return q_node_get_category(node) == q_category_utility &&
           q_table_get_nodes(q_node_get_table(node))[0] == nullptr;
}
inline outcome value_of(q_node_t node) {
    if (is_constant(node)) return {q_error_none, q_table_get_data(q_node_get_table(node))[0]};
    if (q_node_get_category(node) == q_category_utility) return told(q_node_get_expected_utility(node, 0));
    if (is_real_function(node)) return told(q_node_get_value(node));
    if (q_node_get_kind(node) == q_kind_continuous) return told(q_node_get_mean(node));
    const outcome state = state_of(node);
    if (state.code == q_error_none) return in_state(node, std::get<double>(state.value));
    return state == none() && has_numbers(node) ? told(q_node_get_numeric_mean(node)) : state;
}

inline outcome variance_of(q_node_t node) {
    if (is_constant(node)) return {q_error_none, 0.0};
    if (q_node_get_category(node) == q_category_utility) return told(q_node_get_utility_variance(node));
    if (is_real_function(node)) return {told(q_node_get_value(node)).code, 0.0};
    return told(has_numbers(node) ? q_node_get_numeric_variance(node) : q_node_get_variance(node));
}

inline outcome quantile_of(q_node_t node, double level) {
    const outcome spread = variance_of(node);
    if (spread.code != q_error_none) return spread;
    if (!has_numbers(node)) return std::get<double>(spread.value) == 0 ? value_of(node) : none();
    double below = 0, found = 0;
    for (std::size_t s = 0; s < q_node_get_number_of_states(node); ++s) {
        const double belief = q_node_get_belief(node, s);
        if (belief == 0) continue;
        const auto [lower, upper] = range_of(node, s);
        found = range_of(node, s).middle();
        if (found != lower && found != upper)
            found = lower + std::min((level - below) / belief, 1.0) * (upper - lower);
        if ((below += belief) >= level - 1e-12) break;
    }
    return {q_error_none, found};
}

// Looks for the one node in a condition that is in no certain state.
inline q_error_t find_uncertain(q_expression_t in, q_node_t& found) {
    const q_operator_t op = q_expression_get_operator(in);
    if (op == q_operator_node) {
        const q_node_t node = q_expression_get_node(in);
        const bool discrete = q_node_get_kind(node) == q_kind_discrete;
        if (!discrete && q_node_get_kind(node) != q_kind_continuous) return q_error_none;
        const outcome known = discrete ? state_of(node) : variance_of(node);
        if (discrete ? known.code == q_error_none : known == outcome{q_error_none, 0.0}) return q_error_none;
        if (known.code != q_error_none && !(known == none())) return known.code;
        if (!discrete || (found != nullptr && found != node)) return q_error_computation_failed;
        found = node;
    }
    if (!q_expression_is_composite(in) || op == q_operator_variance) return q_error_none;
    const q_expression_t* arguments = q_expression_get_arguments(in) + (op == q_operator_quantile);
    for (; *arguments != nullptr; ++arguments)
        if (const q_error_t code = find_uncertain(*arguments, found)) return code;
    return q_error_none;
}

// Of a condition over nodes one of which may be given.
inline outcome probability_of(q_expression_t condition);
inline outcome evaluated(q_expression_t asked, q_node_t given = nullptr, double state = 0) {
    return oracle::expression_value(
        asked, {[=](q_node_t node) { return node == given ? in_state(node, state) : value_of(node); },
                [=](q_node_t node) {
                    return node == given ? outcome{q_error_none, state} : state_of(node);
                },
                variance_of, quantile_of, probability_of});
}

inline outcome probability_of(q_expression_t condition) {
    q_node_t uncertain = nullptr;
    if (const q_error_t code = find_uncertain(condition, uncertain)) return {code};
    double total = 0, fulfilled = 0;
    for (std::size_t s = 0; s < (uncertain ? q_node_get_number_of_states(uncertain) : 1); ++s) {
        const double belief = uncertain ? q_node_get_belief(uncertain, s) : 1;
        if (belief == 0) continue;
        const outcome holds = evaluated(condition, uncertain, double(s));
        if (holds.code != q_error_none) return holds;
        total += belief;
        if (std::get<bool>(holds.value)) fulfilled += belief;
    }
    return {q_error_none, fulfilled / total};
}

// The state that a value selects.
inline outcome selected(q_node_t of, const outcome& by) {
    if (has_numbers(of) && !increases(of)) return {q_error_invalid_state_values};
    const std::size_t states = q_node_get_number_of_states(of);
    for (std::size_t s = 0; s < states; ++s) {
        bool is_it = false;
        if (!has_numbers(of)) {
            is_it = in_state(of, double(s)) == by;
        } else {
            const double x = std::get<double>(by.value);
            const auto [lower, upper] = range_of(of, s);
            is_it = q_node_get_subtype(of) == q_subtype_number
                        ? std::abs(x - lower) <= 1e-6 * std::abs(x)
                        : lower <= x && (x < upper || (x == upper && s == states - 1));
        }
        if (is_it) return {q_error_none, double(s)};
    }
    return none();
}

// The value of a real-valued function, the state of a discrete one.
inline outcome of_function(q_node_t function) {
    const q_model_t model = q_node_get_model(function);
    if (model == nullptr) return none();
    std::size_t configuration = 0;
    for (q_node_t node : listed(q_model_get_nodes(model))) {
        const outcome state = state_of(node);
        if (state.code != q_error_none) return state;
        configuration =
            configuration * q_node_get_number_of_states(node) + std::size_t(std::get<double>(state.value));
    }
    const q_expression_t chosen = q_model_get_expression(model, configuration);
    if (chosen == nullptr) return none();
    const outcome made = evaluated(chosen);
    return made.code != q_error_none || is_real_function(function) ? made : selected(function, made);
}

}  // namespace meanings
