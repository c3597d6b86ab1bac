// Functions in networks: their values, the tables that discrete ones give themselves, and the order of all that.
#include "fault_plan.h"
#include "function_networks.h"
#include "node_models.h"
#include "scenarios.h"

namespace {

class functions : public testing::TestWithParam<kind> {};

TEST_P(functions, agree_with_recursion_and_enumeration_through_changes) {
    std::size_t successes = 0, values = 0, selections = 0;
    std::set<q_error_t> codes;
    for (unsigned seed = 1; seed <= GetParam().seeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        function_network tested(seed, GetParam());
        tested.run(8);
        successes += tested.successes, values += tested.values, selections += tested.selections;
        codes.insert(tested.codes.begin(), tested.codes.end());
    }
    EXPECT_GT(std::min({successes, values, selections}), 3 * GetParam().seeds) << "most tests test nothing";
    for (q_error_t code : {q_error_computation_failed, q_error_division_by_zero, q_error_no_equilibrium,
                           q_error_inappropriate_arguments, q_error_invalid_state_values})
        EXPECT_EQ(codes.count(code), 1u) << code;
}

INSTANTIATE_TEST_SUITE_P(of, functions, testing::ValuesIn(function_kinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

void set_model(q_node_t function, const char* text) { give_model(function, "", {text}); }
void expect_value(q_node_t function, double value, q_error_t code = q_error_none) {
    const double found = q_node_get_value(function);
    EXPECT_EQ(q_error_code(), code) << q_node_get_name(function);
    EXPECT_TRUE(std::abs(found - value) < 1e-12 || code != q_error_none) << found;
}

constexpr double fails = 100 + q_error_computation_failed, divides = 100 + q_error_division_by_zero;
constexpr double refuses = 100 + q_error_inappropriate_arguments;

// Of nodes of all kinds, and of what functions of them have as values; or 100 and an error code.
struct observed_and_not {
    owned_domain domain{q_domain_new()};
    q_node_t x = new_numeric(domain.get(), "X", q_subtype_number, {1, 2, 4}, {0.25, 0.5, 0.25});
    q_node_t i = new_numeric(domain.get(), "I", q_subtype_interval, {0, 2, 6, HUGE_VAL}, {0.5, 0.25, 0.25});
    q_node_t l = new_numeric(domain.get(), "L", q_subtype_label, {}, {0.5, 0.5});
    q_node_t b = new_numeric(domain.get(), "B", q_subtype_boolean, {}, {0.75, 0.25});
    q_node_t y = new_continuous(domain.get(), "Y"), r = new_chance(domain.get(), "R", 0, {x}, "fo");

    observed_and_not() {
        q_node_set_state_label(l, 1, "b");
        q_node_set_cg_intercept(y, 0, 3);
        q_node_set_cg_variance(y, 0, 4);
        set_model(r, "X");
    }
    q_node_t function_of_all(const char* text) {
        q_node_t made = new_chance(domain.get(), nullptr, 0, {x, i, l, b, y, r}, "fo");
        set_model(made, text);
        return made;
    }
    void observe() {
        for (q_node_t node : {x, l, b}) q_node_select_state(node, 1);
        q_node_select_state(i, 0);
        q_node_enter_value(y, 5);
    }
};

TEST(functions, by_hand) {
    // clang-format off
    const struct {
        const char* text;
        double value, after_evidence;
    } rows[] = {
        {"X + I + Y", 8.25, 8}, {"variance(X)", 1.1875, 0}, {"variance(I)", 5, 1.0 / 3}, {"variance(R)", 0, 0},
        {"quantile(X, 0.75)", 2, 2}, {"quantile(X, 0.76)", 4, 2}, {"quantile(I, 0.625)", 4, 1.25},
        {"quantile(I, 1)", 6, 2}, {"quantile(Y, 0.5)", fails, 5}, {"quantile(X, X)", refuses, refuses},
        {"probability(X >= 2)", 0.75, 1}, {"probability(or(L == \"b\", 1 > 2))", 0.5, 1},
        {"probability(quantile(I, 0.5) + #X > 3)", 0.25, 0},
        {"probability(and(B, X < 10))", fails, 1}, {"probability(variance(X) > if(B, 1.5, 1))", 0.75, 0},
        {"if(B, 1, 2)", fails, 1}, {"if(L == \"b\", #X, 0)", fails, 1}, {"1 / (X - 2)", 4, divides},
        {"log(X - 4)", refuses, refuses}, {"R + 1", 3.25, 3},
        {"1 + 2 * 3 - 4 / 8", 6.5, 6.5}, {"0 ^ 0", 1, 1}, {"0 ^ (-1)", divides, divides},
        {"(-8) ^ (-3)", -0.001953125, -0.001953125}, {"(-8) ^ (1 / 3)", refuses, refuses},
        {"(-0.5) ^ 1e300", 0, 0}, {"(infinity + 1) / infinity", 1, 1}, {"-infinity - infinity", fails, fails},
        {"0 / (-0)", divides, divides}, {"mod(7, -3)", 1, 1}, {"mod(-7, 3)", -1, -1}, {"mod(1, 0)", divides, divides},
        {"log2(8) + log10(100)", 5, 5}, {"log10(-0)", refuses, refuses}, {"exp(1000 * X)", fails, fails},
        {"floor(-1.5)", -2, -2}, {"ceil(-1.5)", -1, -1}, {"min(3, 1, 2)", 1, 1}, {"max(3, 9, X)", 9, 9},
        {"if(not(true), log(0), if(false, X / 0, 4)) + 1", 5, 5}, {"if(and(false, 1 / 0 == 1), 1, 2)", 2, 2},
        {"if(and(true, 1 / 0 == 1), 1, 2)", divides, divides}, {"if(or(false, true, 1 / 0 == 1), 1, 2)", 1, 1},
        {"if(0.1 + 0.2 == 0.3, 1, if(0 == -0, 2, 3))", 2, 2}, {"if(0.1 + 0.2 != 0.3, 1, 2)", 1, 1},
        {"if(\"b\" == \"bb\", 1, 2)", 2, 2}};
    // clang-format on
    observed_and_not all;
    std::vector<q_node_t> tested;
    for (const auto& row : rows) tested.push_back(all.function_of_all(row.text));
    ASSERT_EQ(q_domain_compile(all.domain.get()), q_error_none);
    for (q_node_t function : tested) expect_value(function, 0, q_error_no_equilibrium);
    for (bool observed : {false, true}) {
        if (observed) all.observe();
        EXPECT_EQ(propagate(all.domain), q_error_none);
        for (const auto& row : rows) {
            SCOPED_TRACE(row.text);
            const double value = observed ? row.after_evidence : row.value;
            const auto code = q_error_t(value < 100 ? 0 : int(value) - 100);
            expect_value(tested[std::size_t(&row - rows)], value, code);
        }
    }
}

TEST(functions, of_nodes_of_another_subtype_than_before) {
    observed_and_not all;
    std::vector<q_node_t> tested;
    for (const char* text :
         {"X", "X + 1", "1 - X", "-X", "min(1, X)", "if(X < 1, 1, 2)", "if(X == 1, 1, 2)", "quantile(Y, X)",
          "variance(X)", "quantile(X, 0.5)", "if(not(B), 1, 2)", "if(and(true, B), 1, 2)", "if(B, 1, 2)",
          "if(B == true, 1, 2)", "if(L == \"b\", 1, 2)", "if(\"b\" != L, 1, 2)", "1 + if(true, X, 1)"})
        tested.push_back(all.function_of_all(text));
    q_node_set_subtype(all.x, q_subtype_label);
    q_node_set_subtype(all.b, q_subtype_interval);
    q_node_set_number_of_states(all.l, 1);
    q_node_set_subtype(all.l, q_subtype_number);
    q_node_set_state_value(all.b, 1, 0);
    q_node_set_state_value(all.l, 0, 1);
    all.observe();
    q_node_select_state(all.l, 0);
    ASSERT_EQ(q_domain_compile(all.domain.get()), q_error_none);
    EXPECT_EQ(propagate(all.domain), q_error_none);
    for (q_node_t function : tested) expect_value(function, 0, q_error_inappropriate_arguments);
}

TEST(functions, of_excluded_nodes) {
    const owned_domain domain(q_domain_new());
    const q_node_t a = new_numeric(domain.get(), "A", q_subtype_number, {3, 5}, {0.5, 0.5});
    const q_node_t u = with_table(new_chance(domain.get(), "U", 0, {a}, "uo"), {10, 20});
    const q_node_t f = new_chance(domain.get(), "F", 0, {a, u}, "fo");
    with_table(new_chance(domain.get(), "B", 2, {a}), {0.5, 0.5, 0.25, 0.75});
    set_model(f, "100 * A + U + #A + variance(U)");
    const q_node_t excluded[] = {a, nullptr};
    q_domain_set_excluded_nodes(domain.get(), excluded);
    EXPECT_EQ(q_node_select_state(a, 1), q_error_none);
    EXPECT_EQ(propagate(domain), q_error_none);
    expect_value(f, 521);
}

TEST(functions, of_values_that_are_not_finite) {
    const owned_domain domain(q_domain_new());
    const q_node_t y = new_continuous(domain.get(), "Y"), z = new_continuous(domain.get(), "Z", {y});
    q_node_set_cg_intercept(y, 0, 1e308);
    q_node_set_cg_coefficient(z, y, 0, 10);
    std::vector<q_node_t> tested;
    for (const char* text :
         {"Z", "-Z", "if(Z > 0, 1, 2)", "min(Z, 1)", "1 / Z", "if(Z == Z, 1, 2)", "Y * Y"}) {
        tested.push_back(new_chance(domain.get(), nullptr, 0, {y, z}, "fo"));
        set_model(tested.back(), text);
    }
    const q_node_t beside = new_chance(domain.get(), nullptr, 0, {z}, "fo");
    set_model(beside, "if(or(true, Z > 0), 3, Z)");
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(propagate(domain), q_error_none);
    EXPECT_FALSE(std::isfinite(q_node_get_mean(z)));
    for (q_node_t function : tested) expect_value(function, 0, q_error_computation_failed);
    expect_value(beside, 3);
}

TEST(functions, of_a_million_levels) {
    const owned_domain domain = network("fo cd");
    q_expression_t tree = number(1);
    for (int level = 0; level < 250'000; ++level) {  // to 2 minus what it was
        tree = composite(q_operator_negate, {tree});
        tree = composite(q_operator_add, {tree, number(1)});
        tree = composite(q_operator_add, {number(1), tree});
        tree = composite(q_operator_if, {boolean(false), number(0), tree});
    }
    q_node_t function = node_at(domain.get(), 0);
    set_model(function, "0");
    EXPECT_EQ(q_model_set_expression(q_node_get_model(function), 0, tree), q_error_none);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(propagate(domain), q_error_none);
    expect_value(function, 1);
}

// Each thing after those that depend on it: A (0 or 10) -> F = 2 * A -> G (10 or 20) -> B (0 or 4) -> H.
enum : std::size_t { h, b, g, f, a };
owned_domain chain() {
    owned_domain domain = network("fo cd fd fo cd", "43 32 21 10");
    const std::vector<q_node_t> n = nodes_of(domain.get());
    for (std::size_t i = h; i <= a; ++i) q_node_set_name(n[i], std::string(1, "HBGFA"[i]).c_str());
    for (auto [node, first, second] : {std::tuple(a, 0, 10), {g, 10, 20}, {b, 0, 4}}) {
        q_node_set_number_of_states(n[node], 2);
        q_node_set_subtype(n[node], q_subtype_number);
        q_node_set_state_value(n[node], 0, first);
        q_node_set_state_value(n[node], 1, second);
    }
    set_data(q_node_get_table(n[b]), {0.25, 0.75, 0.75, 0.25});
    set_model(n[f], "2 * A");
    set_model(n[g], "F");
    set_model(n[h], "B");
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    return domain;
}

TEST(functions, need_a_mean_and_are_known_to_compression) {
    const owned_domain domain = chain();
    const std::vector<q_node_t> n = nodes_of(domain.get());
    const auto propagate_tree = [&](q_node_t of, q_equilibrium_t equilibrium = q_equilibrium_sum) {
        return q_junction_tree_propagate(q_node_get_junction_tree(of), equilibrium, q_mode_normal);
    };
    const auto compress = [&] { return outcome(q_domain_compress(domain.get())); };
    EXPECT_EQ(compress(), q_error_no_equilibrium);
    EXPECT_EQ(propagate_tree(n[a], q_equilibrium_max), q_error_none);
    expect_value(n[f], 0, q_error_computation_failed);
    EXPECT_EQ(propagate_tree(n[b]), q_error_computation_failed);
    EXPECT_EQ(propagate(domain), q_error_none);
    set_model(n[g], "0");
    EXPECT_EQ(compress(), q_error_computation_failed);
    set_model(n[g], "F");
    EXPECT_EQ(propagate(domain), q_error_none);
    EXPECT_EQ(compress(), q_error_none);
    for (bool selects_none : {false, true, false}) {
        q_node_retract_findings(n[a]);
        if (selects_none) q_node_select_state(n[a], 0);
        EXPECT_EQ(propagate(domain), selects_none ? q_error_computation_failed : q_error_none);
        expect_value(n[f], selects_none ? 0 : 10);
        expect_value(n[h], 3, selects_none ? q_error_no_equilibrium : q_error_none);
    }
}

TEST(functions, survive_lack_of_memory) {
    if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    for (unsigned way = 0; way < 4; ++way) {
        bool fired = true;  // else there is no later allocation
        for (std::size_t n = 0; fired && !HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "way " << way << ", allocation " << n);
            owned_domain domain = chain();
            if (way < 2) propagate(domain);
            q_node_select_state(node_at(domain.get(), a), 1);
            fault_plan plan(n, way % 2 == 0);
            q_status_t status = propagate(domain);
            fired = plan.stop();
            EXPECT_TRUE(status == q_error_none || (fired && status == q_error_no_memory)) << status;
            if (status != q_error_none) status = propagate(domain);
            EXPECT_EQ(status, q_error_none);
            expect_value(node_at(domain.get(), h), 1);
            domain.reset();
            EXPECT_EQ(plan.leaked(), 0u);
        }
    }
}

}  // namespace
