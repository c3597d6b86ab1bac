// Functions in networks: their values, the tables that discrete ones give themselves, and the order of all that.
#include <cstdio>
#include <fstream>

#include "allocation_faults.h"
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

INSTANTIATE_TEST_SUITE_P(
    of, functions,
    testing::Values(kind{"gaussian", {role::chance, role::chance, role::continuous}, 300},
                    kind{"influence", {role::chance, role::chance, role::decision, role::utility}, 300}),
    [](const auto& tested) { return std::string(tested.param.name); });

q_status_t propagate(const owned_domain& domain) {
    return q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal);
}
q_node_t new_numeric(q_domain_t domain, const char* name, q_subtype_t subtype,
                     const std::vector<double>& values, const std::vector<double>& table,
                     std::initializer_list<q_node_t> parents = {}) {
    const std::size_t states = values.size() - (subtype == q_subtype_interval);
    const q_node_t node = new_chance(domain, name, states, parents);
    q_node_set_subtype(node, subtype);
    for (std::size_t i = 0; i < values.size(); ++i) q_node_set_state_value(node, i, values[i]);
    set_data(q_node_get_table(node), table);
    return node;
}
void set_model(q_node_t function, const char* text) {
    if (q_model_t old = q_node_get_model(function)) q_model_delete(old);
    give_model(function, "", {text});
}
void expect_value(q_node_t function, double value, q_error_t code = q_error_none) {
    const double found = q_node_get_value(function);
    EXPECT_EQ(q_error_code(), code) << q_node_get_name(function);
    EXPECT_TRUE(std::abs(found - value) < 1e-12 || code != q_error_none) << found;
}

TEST(functions, by_hand) {
    constexpr double largest = std::numeric_limits<double>::max();
    constexpr double fails = 100 + q_error_computation_failed, divides = 100 + q_error_division_by_zero;
    constexpr double refuses = 100 + q_error_inappropriate_arguments;
    // clang-format off
    const struct {
        const char* text;
        double value, after_evidence;  // or 100 and an error code
    } rows[] = {
        {"X + I + Y", 8.25, 8}, {"variance(X)", 1.1875, 0}, {"variance(I)", 5, 1.0 / 3},
        {"variance(Y)", 4, 0}, {"variance(R)", 0, 0}, {"quantile(X, 0.75)", 2, 2},
        {"quantile(X, 0.76)", 4, 2}, {"quantile(I, 0.625)", 4, 1.25}, {"quantile(I, 1)", 6, 2},
        {"quantile(Y, 0.5)", fails, 5}, {"quantile(R, 0.5)", 2.25, 2}, {"quantile(X, X)", refuses, refuses},
        {"probability(X >= 2)", 0.75, 1}, {"probability(or(L == \"b\", 1 > 2))", 0.5, 1},
        {"probability(and(B, X < 10))", fails, 1}, {"probability(and(B, Y > 4))", fails, 1},
        {"probability(variance(X) > if(B, 1.5, 1))", 0.75, 0}, {"if(B, 1, 2)", fails, 1},
        {"if(L == \"b\", #X, 0)", fails, 1}, {"if(X > 2, #B, 3)", fails, 3}, {"1 / (X - 2)", 4, divides},
        {"log(X - 4)", refuses, refuses}, {"exp(1000 * X)", fails, fails}, {"R + 1", 3.25, 3}};
    // clang-format on
    owned_domain domain(q_domain_new());
    q_node_t const x = new_numeric(domain.get(), "X", q_subtype_number, {1, 2, 4}, {0.25, 0.5, 0.25});
    q_node_t const i =
        new_numeric(domain.get(), "I", q_subtype_interval, {0, 2, 6, largest}, {0.5, 0.25, 0.25});
    q_node_t const l = new_chance(domain.get(), "L", 2), b = new_chance(domain.get(), "B", 2);
    q_node_t const y = new_continuous(domain.get(), "Y"), r = new_chance(domain.get(), "R", 0, {x}, "fo");
    q_node_set_state_label(l, 1, "b");
    q_node_set_subtype(b, q_subtype_boolean);
    set_data(q_node_get_table(b), {0.75, 0.25});
    q_node_set_cg_intercept(y, 0, 3);
    q_node_set_cg_variance(y, 0, 4);
    set_model(r, "X");
    std::vector<q_node_t> tested;
    for (const auto& row : rows) {
        tested.push_back(new_chance(domain.get(), nullptr, 0, {x, i, l, b, y, r}, "fo"));
        set_model(tested.back(), row.text);
    }
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    for (q_node_t function : tested) expect_value(function, 0, q_error_no_equilibrium);
    for (bool observed : {false, true}) {
        EXPECT_EQ(propagate(domain), q_error_none);
        for (const auto& row : rows) {
            SCOPED_TRACE(row.text);
            const double value = observed ? row.after_evidence : row.value;
            expect_value(tested[std::size_t(&row - rows)], value,
                         value < 100 ? q_error_none : q_error_t(value - 100));
        }
        for (q_node_t node : {x, l, b}) q_node_select_state(node, 1);
        q_node_select_state(i, 0);
        q_node_enter_value(y, 5);
    }
}

// Each thing after those that depend on it: A (0 or 10) -> F = 2 * A -> G (10 or 20) -> B (0 or 4) -> H.
enum : std::size_t { h, b, g, f, a };
owned_domain chain() {
    owned_domain domain(q_domain_new());
    q_node_t const last = new_chance(domain.get(), "H", 0, {}, "fo");
    q_node_t const second = new_numeric(domain.get(), "B", q_subtype_number, {0, 4}, {0.5, 0.5});
    q_node_t const selecting = new_chance(domain.get(), "G", 2, {}, "fd");
    q_node_set_subtype(selecting, q_subtype_number);
    for (std::size_t state : {0u, 1u}) q_node_set_state_value(selecting, state, state == 0 ? 10 : 20);
    q_node_t const real = new_chance(domain.get(), "F", 0, {}, "fo");
    q_node_t const first = new_numeric(domain.get(), "A", q_subtype_number, {0, 10}, {0.5, 0.5});
    for (auto [parent, child] :
         {std::pair(first, real), {real, selecting}, {selecting, second}, {second, last}})
        EXPECT_EQ(q_node_add_parent(child, parent), q_error_none);
    set_data(q_node_get_table(second), {0.25, 0.75, 0.75, 0.25});
    set_model(real, "2 * A");
    set_model(selecting, "F");
    set_model(last, "B");
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    return domain;
}

TEST(functions, are_computed_after_what_they_depend_on) {
    const owned_domain domain = chain();
    const std::vector<q_node_t> n = nodes_of(domain.get());
    const auto expect_chain = [&] {
        q_node_retract_findings(n[a]);
        EXPECT_EQ(propagate(domain), q_error_none);
        expect_value(n[h], 3);
        q_node_select_state(n[a], 1);
        EXPECT_EQ(propagate(domain), q_error_none);
        expect_value(n[h], 1);
        EXPECT_EQ(q_node_get_belief(n[g], 1), 1);
        q_node_select_state(n[a], 0);  // then G has no such state
        EXPECT_EQ(propagate(domain), q_error_computation_failed);
        expect_value(n[f], 0);
        expect_value(n[h], 0, q_error_no_equilibrium);
        EXPECT_EQ(q_node_get_belief(n[a], 0), 1);
        EXPECT_TRUE(q_node_get_belief(n[b], 0) == -1 && q_error_code() == q_error_no_equilibrium);
    };
    expect_chain();
    q_node_retract_findings(n[a]);
    EXPECT_EQ(propagate(domain), q_error_none);
    set_model(n[f], "20");
    expect_value(n[f], 10);
    const auto propagate_tree = [&](q_node_t of, q_equilibrium_t equilibrium = q_equilibrium_sum) {
        return q_junction_tree_propagate(q_node_get_junction_tree(of), equilibrium, q_mode_normal);
    };
    EXPECT_EQ(propagate_tree(n[a]), q_error_none);
    expect_value(n[f], 20);
    expect_value(n[h], 3);
    EXPECT_EQ(propagate_tree(n[b]), q_error_none);
    expect_value(n[h], 1);
    set_model(n[f], "2 * A");
    EXPECT_EQ(propagate_tree(n[a], q_equilibrium_max), q_error_none);
    expect_value(n[f], 0, q_error_computation_failed);  // no mean
    EXPECT_EQ(propagate_tree(n[b]), q_error_computation_failed);

    set_model(n[g], "0");
    EXPECT_EQ(outcome(q_domain_compress(domain.get())), q_error_no_equilibrium);
    set_model(n[g], "F");
    EXPECT_EQ(propagate(domain), q_error_none);
    set_model(n[g], "0");
    EXPECT_EQ(outcome(q_domain_compress(domain.get())), q_error_computation_failed);
    set_model(n[g], "F");
    EXPECT_EQ(propagate(domain), q_error_none);
    EXPECT_EQ(outcome(q_domain_compress(domain.get())), q_error_none);
    expect_chain();
}

TEST(functions, survive_lack_of_memory) {
    if (!allocation_faults::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    for (unsigned way = 0; way < 4; ++way) {
        bool fired = true;  // else there is no later allocation
        for (std::size_t n = 0; fired && !HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "way " << way << ", allocation " << n);
            owned_domain domain = chain();
            if (way < 2) propagate(domain);
            q_node_select_state(node_at(domain.get(), a), 1);
            allocation_faults plan(n, way % 2 == 0);
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

TEST(functions, follow_policies) {
    const owned_domain domain = network("dd uo fo", "01 12");
    const std::vector<q_node_t> n = nodes_of(domain.get());
    q_node_set_number_of_states(n[0], 2);
    set_data(q_node_get_table(n[0]), {0.5, 0.5});
    set_data(q_node_get_table(n[1]), {1, 5});
    q_node_set_name(n[1], "U");
    set_model(n[2], "U + variance(U)");
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(propagate(domain), q_error_none);
    expect_value(n[2], 3 + 4);
    EXPECT_EQ(q_domain_update_policies(domain.get()), q_error_none);
    expect_value(n[2], 5);
}

// Such a utility may have been given to the very tree that depends on it.
TEST(functions, depend_on_no_tree_for_a_utility_without_parents) {
    const owned_domain domain = network("uo fo fd", "01 12");
    const std::vector<q_node_t> n = nodes_of(domain.get());
    q_node_set_name(n[0], "U");
    q_node_set_name(n[1], "F");
    set_data(q_node_get_table(n[0]), {7});
    q_node_set_number_of_states(n[2], 2);
    q_node_set_subtype(n[2], q_subtype_boolean);
    set_model(n[1], "2 * U + variance(U)");
    set_model(n[2], "F > 13");
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(propagate(domain), q_error_none);
    expect_value(n[1], 14);
    EXPECT_EQ(q_node_get_belief(n[2], 1), 1);
}

TEST(functions, report) {
    const owned_domain domain = chain();
    set_model(node_at(domain.get(), h), "log(-B)");
    const std::string path = testing::TempDir() + "function_nodes_test.log";
    ASSERT_EQ(q_domain_set_log_file(domain.get(), path.c_str(), 0), q_error_none);
    EXPECT_EQ(propagate(domain), q_error_none);
    EXPECT_EQ(q_domain_print_beliefs(domain.get()), q_error_none);
    std::string text;
    std::getline(std::ifstream(path), text, '\0');
    EXPECT_EQ(text, "\n\nBeliefs for chance nodes:\n\n    B:\n\tstate0   0.25\n\tstate1   0.75\n"
                    "\n    A:\n\tstate0   0.5\n\tstate1   0.5\n"
                    "\n\nBeliefs for discrete function nodes:\n\n    G --> 10\n"
                    "\n\nValues for real-valued function nodes:\n\n    H: N/A\n\n    F: 10\n");
    std::remove(path.c_str());
}

}  // namespace
