// Inference at the edge of the doubles and of the memory, and tables that are refused.
#include <cmath>

#include "scenarios.h"

using namespace scenarios;

namespace {

double log_p(const owned_domain& domain) { return q_domain_get_log_normalization_constant(domain.get()); }
TEST(inference, refuses_invalid_tables_until_they_are_mended) {
    const owned_domain domain(q_domain_new());
    const q_node_t a = new_chance(domain.get(), "a", 2), b = new_chance(domain.get(), "b", 2, {a});
    const numbers invalid[] = {{0.5, -0.5}, {0, 0}, {NAN, 1}, {INFINITY, 1}, {1.6e308, 1.6e308}, {0, 3}};
    for (const numbers& row : invalid) {
        SCOPED_TRACE(row[0]);
        with_table(b, {3, 1, row[0], row[1]});
        q_node_touch_table(b);
        const bool valid = &row == std::end(invalid) - 1;
        EXPECT_EQ(propagate(domain), valid ? q_error_none : q_error_invalid_probability_potential);
        EXPECT_EQ(q_node_get_belief(b, 0), valid ? 0.375 : -1.0);
        EXPECT_EQ(q_error_code(), valid ? q_error_none : q_error_no_equilibrium);
        EXPECT_EQ(data_of(q_node_get_table(b))[0], valid ? 0.75 : 3) << "what is refused stays as it was";
    }
}

TEST(inference, refuses_what_the_machine_cannot_hold) {
    const std::pair<std::size_t, q_error_t> cases[] = {{std::size_t{1} << 23, q_error_no_memory},
                                                       {std::size_t{1} << 33, q_error_size_too_large}};
    for (const auto& [states, code] : cases) {
        const owned_domain domain(q_domain_new());
        const q_node_t parent = new_chance(domain.get(), "a", states);
        const q_node_t child = new_chance(domain.get(), "b", states, {parent});
        EXPECT_EQ(q_domain_compile(domain.get()), code);
        EXPECT_EQ(q_domain_is_compiled(domain.get()), 0u);
        for (q_node_t node : {parent, child}) q_node_set_number_of_states(node, 2);
        EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    }
}

// p -> q -> r copy their parent's state: weights far apart on p and r meet in the middle, on top of those before.
TEST(inference, is_right_at_the_edge_of_the_doubles) {
    const owned_domain domain = network("cd cd cd", "01 12");
    const nodes all = nodes_of(domain.get());
    for (q_node_t node : all) q_node_set_number_of_states(node, 2);
    for (std::size_t i : {1u, 2u}) with_table(all[i], {1, 0, 0, 1});
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
        double constant = 0;  // of one configuration or both
        for (std::size_t state = 0; state < 2; ++state) {
            q_node_enter_finding(all[0], state, row.on_p[state]);
            q_node_enter_finding(all[2], state, row.on_r[state]);
            constant += row.on_p[state] * row.on_r[state] / 2;
        }
        ASSERT_EQ(propagate(domain), q_error_none);
        if (std::isnormal(constant)) {
            EXPECT_NEAR(q_domain_get_normalization_constant(domain.get()) / constant, 1, 1e-12);
        }
        for (q_node_t node : all) EXPECT_NEAR(q_node_get_belief(node, 0), row.belief, 1e-9);
        ASSERT_EQ(propagate(domain, q_equilibrium_max), q_error_none);
        const double other = row.belief / (1 - row.belief);
        EXPECT_NEAR(q_node_get_belief(all[1], 0), std::min(other, 1.0), 1e-8);  // 1e-315 has 8 digits
    }
}

// What the tables of one clique make vanish is all that evidence outside of it leaves: children c of a and b that are
// possible at all only where both are in the state that together has the probability 1e-400.
TEST(inference, finds_what_vanished_among_the_priors) {
    const owned_domain domain(q_domain_new());
    const q_node_t a = with_table(new_chance(domain.get(), "a", 2), {1e-200, 1});
    const q_node_t b = with_table(new_chance(domain.get(), "b", 2, {a}), {1e-200, 1, 0.5, 0.5});
    for (int i = 0; i < 10; ++i) {
        const q_node_t c = new_chance(domain.get(), ("c" + std::to_string(i)).c_str(), 2, {b, a});
        q_node_select_state(with_table(c, {0.5, 0.5, 1e-60, 1, 1e-60, 1, 1e-60, 1}), 0);
    }
    ASSERT_EQ(propagate(domain), q_error_none);
    EXPECT_NEAR(q_node_get_belief(a, 0), 1, 1e-12);
    EXPECT_NEAR(log_p(domain), 2 * std::log(1e-200) + 10 * std::log(0.5), 1e-9);
}

// Noisy copies of x say that it is 0, measurements that it is 1: either alone is beyond the doubles.
TEST(inference, weighs_states_against_measurements_beyond_the_doubles) {
    const owned_domain domain(q_domain_new());
    const q_node_t x = new_chance(domain.get(), "x", 2);
    for (int i = 0; i < 300; ++i) {
        const q_node_t copy = new_chance(domain.get(), ("copy" + std::to_string(i)).c_str(), 2, {x});
        q_node_select_state(with_table(copy, {0.95, 0.05, 0.05, 0.95}), 0);
    }
    for (int i = 0; i < 40; ++i) {
        const q_node_t measured = new_continuous(domain.get(), ("m" + std::to_string(i)).c_str(), {x});
        q_node_set_cg_intercept(measured, 1, 10);
        for (std::size_t state : {0u, 1u}) q_node_set_cg_variance(measured, state, 1);
        q_node_enter_value(measured, 10);
    }
    ASSERT_EQ(propagate(domain), q_error_none);
    EXPECT_NEAR(q_node_get_belief(x, 1), 1, 1e-12);
    const double expected = std::log(0.5) + 300 * std::log(0.05) - 20 * std::log(2 * std::acos(-1.0));
    EXPECT_NEAR(log_p(domain), expected, 1e-9);
}

// A continuous node with a mean and a variance in each state of another one.
struct two_states {
    two_states(const numbers& weights, const numbers& moments) {
        with_table(state, weights);
        for (std::size_t s : {0u, 1u}) {
            q_node_set_cg_intercept(x, s, moments[2 * s]);
            q_node_set_cg_variance(x, s, moments[2 * s + 1]);
        }
    }
    owned_domain domain{q_domain_new()};
    q_node_t state = new_chance(domain.get(), "state", 2), x = new_continuous(domain.get(), "x", {state});
};

TEST(inference, weighs_states_by_densities) {
    const double far = 1 << 20, root = -std::log(2 * std::acos(-1.0)) / 2, half = std::log(0.5);
    const struct {
        numbers weights, moments;
        double value;
        q_error_t code;
        double belief, log_p;
    } rows[] = {{{1, 1}, {0, 0, 1, 0}, 1, q_error_zero_variance, 0, 0},
                {{1, 0}, {1, 4, 1, 0}, 1, q_error_none, 1, root + half},
                {{1, 1}, {3, 0, 1, 4}, 1, q_error_none, 0, root + 2 * half},
                {{1, 1}, {3, 0, 2, 0}, 1, q_error_low_density, 0, 0},
                {{1, 1}, {1, 1, 0, 1}, far, q_error_none, 1, root + half - (far - 1) * (far - 1) / 2},
                {{1, 1},
                 {1 / far, 1, 0, 1},
                 far,
                 q_error_none,
                 1 / (1 + std::exp(-1)),
                 root + half + std::log(1 + std::exp(-1)) + 1 - far * far / 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const two_states tested(row.weights, row.moments);
        q_node_enter_value(tested.x, row.value);
        ASSERT_EQ(propagate(tested.domain), row.code);
        if (row.code != q_error_none) continue;
        EXPECT_NEAR(q_node_get_belief(tested.state, 0), row.belief, 1e-3);  // squares of a million
        EXPECT_DOUBLE_EQ(log_p(tested.domain), row.log_p);
    }
}

TEST(inference, takes_means_that_differ_by_rounding_as_equal) {
    for (double power : {-43.0, -42.0}) {
        const two_states tested({1, 1}, {1, 0, 1 + std::exp2(power), 0});
        ASSERT_EQ(propagate(tested.domain), q_error_none);
        EXPECT_EQ(q_node_get_variance(tested.x), power == -43 ? 0 : std::exp2(-86));
    }
}

TEST(inference, retracts_fast_what_is_larger_than_doubles_together) {
    const owned_domain domain(q_domain_new());
    const q_node_t a = new_chance(domain.get(), "a", 2), b = new_chance(domain.get(), "b", 2);
    const q_node_t child = new_chance(domain.get(), "c", 2, {a, b});
    with_table(child, {0.9, 0.1, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5});
    for (q_node_t parent : {a, b}) q_node_enter_finding(parent, 0, 1e200);
    for (q_equilibrium_t equilibrium : {q_equilibrium_sum, q_equilibrium_max}) {
        ASSERT_EQ(propagate(domain, equilibrium, q_mode_fast_retraction), q_error_none);
        EXPECT_NEAR(q_node_get_belief(child, 1) / q_node_get_belief(child, 0), 1.0 / 9, 1e-12);
    }
}

}  // namespace
