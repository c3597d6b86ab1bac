// What is read after a propagation: codes, moments of numeric nodes, and the report.
#include <cmath>

#include "scenarios.h"
#include "texts.h"

using namespace scenarios;

namespace {

constexpr double largest = std::numeric_limits<double>::max();
constexpr q_equilibrium_t sum = q_equilibrium_sum, max = q_equilibrium_max;
constexpr q_mode_t normal = q_mode_normal, fast = q_mode_fast_retraction;
constexpr q_subtype_t numbered = q_subtype_number, interval = q_subtype_interval;

q_node_t new_with_data(q_domain_t domain, const char* name, std::size_t states, const numbers& data,
                       std::initializer_list<q_node_t> parents = {}, const char* letters = "cd") {
    q_node_t node = new_chance(domain, name, states, parents, letters);
    set_data(q_node_get_table(node), data);
    return node;
}
enum : std::size_t { d, a, b, n, i, f, u, w, r };
owned_domain new_diagram() {
    owned_domain domain(q_domain_new());
    q_node_t decision = new_with_data(domain.get(), "D", 2, {0.5, 0.5}, {}, "dd");
    q_node_t chance = new_with_data(domain.get(), "A", 2, {0.25, 0.75});
    q_node_set_state_label(chance, 0, "yes");
    q_node_set_subtype(new_with_data(domain.get(), "B", 2, {0.5, 0.5}), q_subtype_boolean);
    q_node_t number = new_numeric(domain.get(), "N", numbered, {2.5, 10}, {0.5, 0.5});
    q_node_select_state(number, 1);
    new_numeric(domain.get(), "I", interval, {-largest, 3, largest}, {0, 1});
    new_with_data(domain.get(), "F", 2, {0, 1}, {}, "fd");
    new_with_data(domain.get(), "U", 0, {8, 0, 4, 4}, {decision, chance}, "uo");
    new_with_data(domain.get(), "W", 0, {7, -2.5}, {number}, "uo");
    const q_node_t no_nodes[] = {nullptr};
    for (const char* name : {"R", "S"}) new_chance(domain.get(), name, 0, {}, "fo");
    const q_model_t model = q_node_new_model(node_at(domain.get(), r + 1), no_nodes);
    q_model_set_expression(model, 0, q_expression_make_number(7));
    return domain;
}
owned_domain diagram() { return propagated(new_diagram()); }

enum : std::size_t { c, x, y };
owned_domain gaussian() {
    owned_domain domain = network("cd cc cc", "12");
    const nodes all = nodes_of(domain.get());
    for (q_node_t node : {all[x], all[y]}) q_node_set_cg_variance(node, 0, 4);
    q_node_set_cg_intercept(all[y], 0, 6.5);
    q_node_set_cg_coefficient(all[y], all[x], 0, 3);
    q_node_enter_value(all[x], 1.5);
    return propagated(std::move(domain));
}

std::string report(const owned_domain& domain) {
    return logged(domain.get(), [&] { EXPECT_EQ(q_domain_print_beliefs(domain.get()), q_error_none); });
}

TEST(results, report) {
    const char* of_diagram =
        "\n\nBeliefs (and expected utilities) for decision nodes:\n"
        "\n    D:\n\tstate0   0.5 (2)\n\tstate1   0.5 (4)\n"
        "\n\nBeliefs (and expected utilities) for chance nodes:\n"
        "\n    A:\n\tyes        0.25 (6)\n\tstate1   0.75 (2)\n"
        "\n    B:\n\tfalse      0.5 (0)\n\ttrue       0.5 (0)\n\n    N --> 10 (-2.5)\n\n    I --> 3 (0)\n"
        "\n\nBeliefs (and expected utilities) for discrete function nodes:\n\n    F --> state1 (0)\n"
        "\n\nExpected utilities for utility nodes:\n"
        "\n    U: 3\n\n    W: -2.5\n\nOverall expected utility: 0.5\n"
        "\n\nValues for real-valued function nodes:\n\n    R: N/A\n\n    S: 7\n";
    EXPECT_EQ(report(diagram()), of_diagram);
    EXPECT_EQ(report(gaussian()), "\n\nBeliefs for chance nodes:\n\n    C1 --> state0\n\n    C2 --> 1.5\n"
                                  "\n    C3:\n\tMean: 11   Variance: 4   SD: 2\n");
}

TEST(results, codes) {
    const auto belief = q_node_get_belief, utility = q_node_get_expected_utility;
    const auto propagated_finding = q_node_get_propagated_finding;
    const auto report = [](q_domain_t domain, const nodes&) {
        EXPECT_EQ(q_domain_set_log_file(domain, "/dev/full", 0), q_error_none);
        return q_domain_print_beliefs(domain);
    };
    const auto log_constant = [](q_domain_t domain, const nodes&) {  // where -1 is no failure
        EXPECT_EQ(q_domain_get_log_normalization_constant(domain), 1.0);
        return q_error_code();
    };
    for (bool is_compiled : {false, true}) {
        const auto build = [=] {
            owned_domain domain = new_diagram();
            if (is_compiled) q_domain_compile(domain.get());
            return domain;
        };
        expect_refusals(build, is_compiled ? q_error_no_equilibrium : q_error_not_compiled, report,
                        call(belief, a, 0), call(q_node_get_numeric_mean, n), call(q_node_get_value, r),
                        call(utility, a, 0), call(utility, u, 0), call(q_node_get_utility_minimum, u),
                        call(q_domain_get_expected_utility), call(q_domain_get_normalization_constant),
                        log_constant, call(q_node_get_propagated_state, a));
        expect_refusals(build, is_compiled ? q_error_usage : q_error_not_compiled,
                        call(q_domain_propagate, is_compiled ? q_equilibrium_none : sum, normal),
                        call(q_domain_propagate, sum, is_compiled ? 22 : normal));
        expect_refusals(build, q_error_usage, call(propagated_finding, a, 2));
    }
    expect_refusals(diagram, q_error_io, report);
    expect_refusals(diagram, q_error_computation_failed, call(q_node_get_value, r));
    expect_refusals(diagram, q_error_usage, call(belief, a, 2), call(belief, u, 0), call(q_node_get_mean, a),
                    call(q_node_get_numeric_mean, b), call(q_node_get_value, f), call(utility, a, 2),
                    call(utility, u, 1), call(utility, r, 0), call(q_node_get_utility_maximum, r),
                    call(q_domain_compile), call(q_node_select_state, a, 2), call(q_node_retract_findings, r),
                    call(q_node_evidence_is_entered, r), call(q_node_evidence_to_propagate, r));
    for (double weight : {-1.0, double(NAN), double(INFINITY), largest})
        expect_refusals(diagram, q_error_usage, call(q_node_enter_finding, a, 0, weight));
    const auto tree_mode = [](q_domain_t domain, q_mode_t mode) {
        return q_junction_tree_evidence_mode_is(q_domain_get_first_junction_tree(domain), mode);
    };
    expect_refusals(gaussian, q_error_usage, call(belief, x, 0), call(utility, x, 0),
                    call(q_node_enter_value, c, 1.0), call(q_node_select_state, x, 0),
                    call(q_node_get_propagated_state, x), call(q_node_get_propagated_value, c),
                    call(q_domain_equilibrium_is, q_equilibrium_none), call(+tree_mode, 22),
                    call(q_domain_set_concurrency_level, 0), call(q_domain_set_grain_size, 0));
    expect_refusals(gaussian, q_error_no_value, call(q_node_get_entered_value, y),
                    call(q_node_get_propagated_value, y));
    const auto triangulated = [] {
        owned_domain domain = network("cd cc");
        q_domain_triangulate(domain.get(), q_triangulate_best_greedy);
        return domain;
    };
    expect_refusals(triangulated, q_error_not_compiled, call(q_node_get_propagated_value, 1),
                    call(q_domain_evidence_to_propagate), call(+tree_mode, normal));
    EXPECT_EQ(q_domain_print_beliefs(new_diagram().get()), q_error_none) << "no log, nothing to do";
}

TEST(results, moments_and_the_utility_of_no_utilities_need_posteriors) {
    const struct {
        q_equilibrium_t equilibrium;
        q_mode_t mode;
        bool observed;
        q_error_t code;
        double belief;
    } rows[] = {{sum, normal, true, q_error_none, 1},   {sum, fast, false, q_error_none, 0.25},
                {sum, fast, true, q_error_usage, 0.25}, {max, normal, false, q_error_usage, 1.0 / 3},
                {max, normal, true, q_error_usage, 1},  {sum, normal, false, q_error_none, 0.25}};
    owned_domain domain(q_domain_new());
    q_node_t node = new_numeric(domain.get(), "n", numbered, {1, 3}, {0.75, 0.25});
    domain = propagated(std::move(domain));
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        row.observed ? q_node_select_state(node, 1) : q_node_retract_findings(node);
        ASSERT_EQ(q_domain_propagate(domain.get(), row.equilibrium, row.mode), q_error_none);
        EXPECT_DOUBLE_EQ(q_node_get_belief(node, 1), row.belief);
        EXPECT_EQ(outcome(q_node_get_numeric_mean(node)), row.code);
        EXPECT_EQ(outcome(q_node_get_expected_utility(node, 0)), row.code);
        EXPECT_EQ(outcome(q_domain_get_expected_utility(domain.get())), row.code);
    }
}

TEST(results, moments_of_numeric_nodes) {
    const struct {
        q_subtype_t subtype;
        numbers values, beliefs;
        double mean, variance;
        q_error_t code = q_error_none;
    } rows[] = {{numbered, {1, 2, 5}, {0.5, 0.25, 0.25}, 2.25, 2.6875},
                {numbered, {}, {1, 0}, -1, -1, q_error_invalid_state_values},
                {numbered, {2, 1}, {1, 0}, -1, -1, q_error_invalid_state_values},
                {interval, {0, 2, 8}, {0.5, 0.5}, 3, 4 + (4 + 36) / 24.0},
                {interval, {-largest, 2, 8, largest}, {0.25, 0.5, 0.25}, 5, 4.5 + 1.5},
                {interval, {-1, largest}, {1}, -1, 0},
                {interval, {-largest, largest}, {1}, -1, -1, q_error_invalid_state_values}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        owned_domain domain(q_domain_new());
        q_node_t node = new_numeric(domain.get(), "n", row.subtype, row.values, row.beliefs);
        domain = propagated(std::move(domain));
        EXPECT_DOUBLE_EQ(q_node_get_numeric_mean(node), row.mean);
        EXPECT_DOUBLE_EQ(q_node_get_numeric_variance(node), row.variance);
        EXPECT_EQ(q_error_code(), row.code);
    }
}

}  // namespace
