// Beliefs and the probability of the evidence in cases that can be worked out, and what is refused.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"

namespace {

TEST(Inference, RefusesInvalidTablesUntilTheyAreMended) {
    owned_domain domain(q_domain_new());
    q_node_t a = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
    q_node_t b = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
    for (q_node_t node : {a, b}) q_node_set_number_of_states(node, 2);
    q_node_add_parent(b, a);
    q_number_t* data = q_table_get_data(q_node_get_table(b));
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    const struct {
        double second_row[2];
        bool valid;
    } rows[] = {{{0.5, -0.5}, false},        {{0, 0}, false}, {{NAN, 1}, false}, {{INFINITY, 1}, false},
                {{1.6e308, 1.6e308}, false}, {{0, 3}, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.second_row[0]);
        data[0] = 3, data[1] = 1;
        data[2] = row.second_row[0], data[3] = row.second_row[1];
        q_node_touch_table(b);
        const q_status_t status = q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal);
        EXPECT_EQ(status, row.valid ? q_error_none : q_error_invalid_probability_potential);
        EXPECT_EQ(q_node_get_belief(b, 0), row.valid ? 0.375 : -1.0);
        EXPECT_EQ(q_error_code(), row.valid ? q_error_none : q_error_no_equilibrium);
        EXPECT_EQ(data[0], row.valid ? 0.75 : 3) << "a table that is refused stays as it was";
    }
}

TEST(Compilation, RefusesWhatTheMachineCannotHold) {
    const struct {
        std::size_t states;
        q_error_t code;
    } cases[] = {{std::size_t{1} << 23, q_error_no_memory}, {std::size_t{1} << 33, q_error_size_too_large}};
    for (const auto& size : cases) {
        owned_domain domain(q_domain_new());
        q_node_t parent = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
        q_node_t child = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
        for (q_node_t node : {parent, child}) q_node_set_number_of_states(node, size.states);
        q_node_add_parent(child, parent);
        EXPECT_EQ(q_domain_compile(domain.get()), size.code);
        EXPECT_EQ(q_domain_is_compiled(domain.get()), 0u);
        q_node_remove_parent(child, parent);
        for (q_node_t node : {parent, child}) q_node_set_number_of_states(node, 2);
        EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    }
}

// A hub with many children: its posterior is a product of as many factors, worked out here in logarithms. The findings
// favour now one state of the hub, now another, and the product is far outside the doubles.
TEST(Inference, SurvivesManyChildrenOfOneNode) {
    const struct {
        std::size_t hub_states, children;
        bool with_evidence;
    } stars[] = {{2, 20000, false}, {100, 2000, false}, {2, 20000, true}, {7, 5000, true}};
    for (const auto& star : stars) {
        SCOPED_TRACE(star.children);
        owned_domain domain(q_domain_new());
        q_node_t hub = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
        q_node_set_number_of_states(hub, star.hub_states);
        std::vector<double> log_posterior(star.hub_states, -std::log(static_cast<double>(star.hub_states)));
        for (std::size_t i = 0; i < star.children; ++i) {
            q_node_t child = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
            q_node_set_number_of_states(child, 2);
            q_node_add_parent(child, hub);
            q_number_t* rows = q_table_get_data(q_node_get_table(child));
            const std::size_t finding = i % 2;
            for (std::size_t h = 0; h < star.hub_states; ++h) {
                rows[2 * h] = static_cast<double>(1 + (h + i / 2) % star.hub_states) /
                              static_cast<double>(star.hub_states + 1);
                rows[2 * h + 1] = 1 - rows[2 * h];
                if (star.with_evidence) log_posterior[h] += std::log(rows[2 * h + finding]);
            }
            if (star.with_evidence) q_node_select_state(child, finding);
        }
        ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
        ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
        const double largest = *std::max_element(log_posterior.begin(), log_posterior.end());
        double sum = 0;
        for (double log_p : log_posterior) sum += std::exp(log_p - largest);
        const double expected = star.with_evidence ? largest + std::log(sum) : 0;
        EXPECT_NEAR(q_domain_get_log_normalization_constant(domain.get()), expected,
                    1e-12 * std::abs(expected));
        for (std::size_t h = 0; h < star.hub_states; ++h)
            EXPECT_NEAR(q_node_get_belief(hub, h), std::exp(log_posterior[h] - largest) / sum, 1e-9);
    }
}

// p -> q -> r copy their parent's state: weights far apart on p and r meet in the middle, on top of those before.
TEST(Inference, IsRightAtTheEdgeOfTheDoubles) {
    owned_domain domain(q_domain_new());
    q_node_t nodes[3];
    for (q_node_t& node : nodes) {
        node = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
        q_node_set_number_of_states(node, 2);
    }
    for (int i = 1; i < 3; ++i) {
        q_node_add_parent(nodes[i], nodes[i - 1]);
        q_number_t* copy = q_table_get_data(q_node_get_table(nodes[i]));
        copy[1] = copy[2] = 0;
    }
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    const struct {
        double on_p[2], on_r[2];
        double belief;  // of state 0
    } rows[] = {{{1e-315, 1e-305}, {1, 1e-10}, 0.5},
                {{1e-320, 1e-320}, {1, 3}, 0.25},
                {{1e308, 1e308}, {1e308, 3e307}, 10.0 / 13},
                {{1, 1e-200}, {1e-200, 3}, 0.25},
                {{1, 1e-250}, {1e-250, 1}, 0.5},
                {{1e-305, 1}, {1, 1e-315}, 1 / (1 + 1e-10)},
                {{1e-320, 1}, {1, 0}, 1},
                {{1e300, 1}, {1, 1}, 1},
                {{1e-295, 1e-296}, {1, 1}, 10.0 / 11},
                {{1, 1e-200}, {1, 1}, 1},
                {{1e-200, 1}, {1, 1}, 1e-200},
                {{1, 1}, {1, 1}, 0.5}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.on_p[0]);
        for (std::size_t state = 0; state < 2; ++state) {
            ASSERT_EQ(q_node_enter_finding(nodes[0], state, row.on_p[state]), q_error_none);
            ASSERT_EQ(q_node_enter_finding(nodes[2], state, row.on_r[state]), q_error_none);
        }
        double constant = 0;  // of one configuration or both
        for (std::size_t state = 0; state < 2; ++state) constant += row.on_p[state] * row.on_r[state] / 2;
        ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
        if (std::isnormal(constant)) {
            EXPECT_NEAR(q_domain_get_normalization_constant(domain.get()) / constant, 1, 1e-12);
        }
        for (q_node_t node : nodes) EXPECT_NEAR(q_node_get_belief(node, 0), row.belief, 1e-9);
        ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_max, q_mode_normal), q_error_none);
        const double other = row.belief / (1 - row.belief);
        EXPECT_NEAR(q_node_get_belief(nodes[1], 0), std::min(other, 1.0), 1e-8);  // 1e-315 has 8 digits
    }
}

// What the tables of one clique make vanish is all that evidence outside of it leaves: children c of a and b that are
// possible at all only where both are in the state that together has the probability 1e-400.
TEST(Inference, FindsWhatVanishedAmongThePriors) {
    owned_domain domain = network("cd cd", "01");
    q_node_t a = node_at(domain.get(), 0), b = node_at(domain.get(), 1);
    for (q_node_t node : {a, b}) q_node_set_number_of_states(node, 2);
    set_data(q_node_get_table(a), {1e-200, 1});
    set_data(q_node_get_table(b), {1e-200, 1, 0.5, 0.5});
    for (int i = 0; i < 10; ++i) {
        q_node_t c = new_chance(domain.get(), ("c" + std::to_string(i)).c_str(), 2, {b, a});
        set_data(q_node_get_table(c), {0.5, 0.5, 1e-60, 1, 1e-60, 1, 1e-60, 1});
        q_node_select_state(c, 0);
    }
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    EXPECT_NEAR(q_node_get_belief(a, 0), 1, 1e-12);
    EXPECT_NEAR(q_domain_get_log_normalization_constant(domain.get()),
                2 * std::log(1e-200) + 10 * std::log(0.5), 1e-9);
}

// Noisy copies of x say that it is 0, measurements that it is 1: either alone is beyond the doubles.
TEST(Inference, WeighsStatesAgainstMeasurementsBeyondTheDoubles) {
    owned_domain domain(q_domain_new());
    q_node_t x = new_chance(domain.get(), "x", 2);
    for (int i = 0; i < 300; ++i) {
        q_node_t copy = new_chance(domain.get(), ("copy" + std::to_string(i)).c_str(), 2, {x});
        set_data(q_node_get_table(copy), {0.95, 0.05, 0.05, 0.95});
        q_node_select_state(copy, 0);
    }
    for (int i = 0; i < 40; ++i) {
        q_node_t measured = new_continuous(domain.get(), ("m" + std::to_string(i)).c_str(), {x});
        q_node_set_cg_intercept(measured, 1, 10);
        for (std::size_t state : {0u, 1u}) q_node_set_cg_variance(measured, state, 1);
        q_node_enter_value(measured, 10);
    }
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    EXPECT_NEAR(q_node_get_belief(x, 1), 1, 1e-12);
    const double expected = std::log(0.5) + 300 * std::log(0.05) - 20 * std::log(2 * std::acos(-1.0));
    EXPECT_NEAR(q_domain_get_log_normalization_constant(domain.get()), expected, 1e-9);
}

TEST(Inference, NeverTakesInThePolicyOfAnExcludedDecision) {
    owned_domain domain = network("cd dd cd", "01 02");
    const std::vector<q_node_t> n = nodes_of(domain.get());
    for (q_node_t node : n) q_node_set_number_of_states(node, 2);
    set_data(q_node_get_table(n[1]), {0.9, 0.1, 0.1, 0.9});
    set_data(q_node_get_table(n[2]), {1, 0, 1, 0});
    const q_node_t excluded[] = {n[1], nullptr};
    q_domain_set_excluded_nodes(domain.get(), excluded);
    q_node_select_state(n[1], 0);
    q_node_select_state(n[2], 1);
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal),
              q_error_inconsistency_or_underflow);
    q_node_retract_findings(n[2]);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    EXPECT_EQ(q_node_get_belief(n[0], 0), 0.5);
    EXPECT_EQ(q_domain_get_normalization_constant(domain.get()), 1.0);
}

TEST(Inference, RetractsFastWhatIsLargerThanDoublesTogether) {
    owned_domain domain = network("cd cd cd", "01 21");
    const std::vector<q_node_t> n = nodes_of(domain.get());
    for (q_node_t node : n) q_node_set_number_of_states(node, 2);
    set_data(q_node_get_table(n[1]), {0.9, 0.1, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5});
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    for (q_node_t parent : {n[0], n[2]}) q_node_enter_finding(parent, 0, 1e200);
    for (q_equilibrium_t equilibrium : {q_equilibrium_sum, q_equilibrium_max}) {
        ASSERT_EQ(q_domain_propagate(domain.get(), equilibrium, q_mode_fast_retraction), q_error_none);
        EXPECT_NEAR(q_node_get_belief(n[1], 1) / q_node_get_belief(n[1], 0), 1.0 / 9, 1e-12);
    }
}

// The chest clinic after Lauritzen & Spiegelhalter (1988), with numbers that can be worked out on paper.
TEST(Inference, SolvesTheChestClinicReadFromAFile) {
    owned_domain domain(q_net_parse_domain(QUARN_SOURCE_DIR "/examples/chest_clinic.net", nullptr, nullptr));
    ASSERT_NE(domain, nullptr);
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    const auto belief = [&](const char* name) {
        return q_node_get_belief(q_domain_get_node_by_name(domain.get(), name), 0);
    };
    const double tuberculosis = 0.01 * 0.05 + 0.99 * 0.01;
    const double cancer = 0.5 * 0.1 + 0.5 * 0.01;
    const double either = 1 - (1 - tuberculosis) * (1 - cancer);
    EXPECT_NEAR(belief("tuberculosis"), tuberculosis, 1e-15);
    EXPECT_NEAR(belief("cancer"), cancer, 1e-15);
    EXPECT_NEAR(belief("either"), either, 1e-15);
    EXPECT_NEAR(belief("xray"), 0.98 * either + 0.05 * (1 - either), 1e-15);
    EXPECT_NEAR(belief("bronchitis"), 0.45, 1e-15);
    EXPECT_NEAR(belief("dyspnoea"), 0.4359706, 1e-12);
}

TEST(Evidence, ClassifiesWhatIsEntered) {
    owned_domain domain(q_domain_new());
    q_node_t node = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
    q_node_set_number_of_states(node, 3);
    const struct {
        std::size_t state;
        double value;
        int64_t index;
        bool likelihood;
    } steps[] = {
        {0, 0, -2, false}, {1, 0, 2, false}, {0, 0.5, -2, true}, {0, 1, -2, false}, {1, 1, -1, false}};
    for (const auto& step : steps) {
        ASSERT_EQ(q_node_enter_finding(node, step.state, step.value), q_error_none);
        EXPECT_EQ(q_node_get_selected_state(node), step.index) << step.state << ": " << step.value;
        EXPECT_EQ(q_node_likelihood_is_entered(node), step.likelihood ? 1u : 0u);
        EXPECT_EQ(q_node_get_entered_finding(node, step.state), step.value);
    }
    // A selected state stands for a vector of its own, from which the next weight goes on.
    q_node_enter_finding(node, 0, 0.25);
    q_node_select_state(node, 2);
    EXPECT_EQ(q_node_get_entered_finding(node, 0), 0.0);
    q_node_enter_finding(node, 1, 0.5);
    EXPECT_EQ(q_node_get_entered_finding(node, 0), 0.0);
    EXPECT_EQ(q_node_get_entered_finding(node, 2), 1.0);
    EXPECT_EQ(q_node_get_selected_state(node), -2);
    for (const double refused :
         {-1.0, static_cast<double>(NAN), static_cast<double>(INFINITY), 1.7976931348623157e308})
        EXPECT_EQ(q_node_enter_finding(node, 0, refused), q_error_usage);
    EXPECT_EQ(q_node_enter_finding(node, 3, 1), q_error_usage);
    EXPECT_EQ(q_node_select_state(node, 3), q_error_usage);
}

TEST(Evidence, IsNoneOnANodeOfOneState) {
    owned_domain domain(q_domain_new());
    q_node_t node = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    q_node_select_state(node, 0);
    EXPECT_EQ(q_node_evidence_to_propagate(node), 0u);
    q_node_enter_finding(node, 0, 0.5);
    EXPECT_EQ(q_node_evidence_to_propagate(node), 1u);
}

TEST(Results, AreReadInTheRightOrderOnly) {
    owned_domain domain(q_domain_new());
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_usage) << "nothing to compile";
    q_node_t node = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
    q_node_set_number_of_states(node, 2);
    const auto expect_code = [&](q_error_t code) {
        EXPECT_EQ(q_node_get_belief(node, 0), -1.0);
        EXPECT_EQ(q_error_code(), code);
        EXPECT_EQ(q_domain_get_normalization_constant(domain.get()), -1.0);
        EXPECT_EQ(q_error_code(), code);
        EXPECT_EQ(q_domain_get_log_normalization_constant(domain.get()), 1.0);
        EXPECT_EQ(q_error_code(), code);
        EXPECT_EQ(q_node_get_propagated_state(node), -1);
        EXPECT_EQ(q_error_code(), code);
    };
    expect_code(q_error_not_compiled);
    EXPECT_EQ(q_node_get_propagated_finding(node, 2), -1.0);
    EXPECT_EQ(q_error_code(), q_error_usage) << "a wrong state is reported first";
    EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_not_compiled);
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_usage) << "compiled already";
    expect_code(q_error_no_equilibrium);
    EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_none, q_mode_normal), q_error_usage);
    EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, 22), q_error_usage);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    EXPECT_EQ(q_node_get_belief(node, 1), 0.5);
    EXPECT_EQ(q_node_get_belief(node, 2), -1.0);
    EXPECT_EQ(q_error_code(), q_error_usage);
}

}  // namespace
