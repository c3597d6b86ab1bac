// Random numbers, and configurations drawn from random networks against enumeration of their distribution.
#include <map>

#include "fault_plan.h"
#include "model.h"
#include "scenarios.h"

namespace {

using namespace scenarios;

double uniform_after(q_domain_t domain, int numbers) {
    for (int i = 0; i < numbers; ++i) q_domain_get_uniform_random(domain);
    return q_domain_get_uniform_random(domain);
}

TEST(random_numbers, are_those_of_the_published_generator) {
    // Its test makes 2009 times 1009 numbers from this seed, of which the library uses 100 each.
    const owned_domain fresh(q_domain_new()), seeded(q_domain_new()), other(q_domain_new());
    q_domain_seed_random(seeded.get(), 310952);
    EXPECT_EQ(uniform_after(fresh.get(), 200900), 0.36410514377569680455);
    EXPECT_EQ(uniform_after(seeded.get(), 200900), 0.36410514377569680455);

    q_domain_seed_random(seeded.get(), 0x4000'0007);
    q_domain_seed_random(other.get(), 7);
    EXPECT_EQ(uniform_after(seeded.get(), 0), uniform_after(other.get(), 0));
    q_domain_seed_random(other.get(), 8);
    EXPECT_NE(uniform_after(seeded.get(), 0), uniform_after(other.get(), 0));
}

TEST(random_numbers, have_a_normal_distribution) {
    const owned_domain owned(q_domain_new()), untouched(q_domain_new());
    q_domain_t const domain = owned.get();
    EXPECT_EQ(q_domain_get_normal_random(domain, 3, 0), 3);
    for (double variance : {-1.0, double(NAN)})
        EXPECT_EQ(outcome(q_domain_get_normal_random(domain, 3, variance)), q_error_usage);
    EXPECT_EQ(uniform_after(domain, 0), uniform_after(untouched.get(), 0)) << "nothing was used up";

    const int count = 100000;
    double moments[5] = {};
    for (int i = 0; i < count; ++i) {
        const double deviation = (q_domain_get_normal_random(domain, 3, 4) - 3) / 2;
        for (int power = 1; power < 5; ++power) moments[power] += std::pow(deviation, power) / count;
    }
    const double expected[] = {0, 0, 1, 0, 3}, variances[] = {0, 1, 2, 15, 96};
    for (int power = 1; power < 5; ++power)
        EXPECT_NEAR(moments[power], expected[power], 4 * std::sqrt(variances[power] / count)) << power;
}

// What the documented steps make of the numbers of another domain with the same seed.
struct replay {
    owned_domain numbers{q_domain_new()};

    double uniform() const { return q_domain_get_uniform_random(numbers.get()); }
    double normal() const {
        for (;;) {
            const double u = uniform(), x = (uniform() - 0.5) * 1.7155277699214135 / u;
            if (x * x <= -4 * std::log(u)) return x;
        }
    }
    std::int64_t state(const std::vector<double>& weights) const {
        const double threshold = std::accumulate(weights.begin(), weights.end(), 0.0) * 0.5 * uniform();
        const bool is_forward = uniform() < 0.5;
        double sum = 0;
        for (std::size_t i = 0;; ++i) {
            const std::size_t state = is_forward ? i : weights.size() - 1 - i;
            if ((sum += weights.at(state)) > threshold) return std::int64_t(state);
        }
    }
};

TEST(random_numbers, are_used_up_in_the_documented_order) {
    owned_domain owned = network("cd cd cd cc", "10");
    const std::vector<double> of_b{1, 2, 3, 4}, rows[]{{0, 2, 1}, {4, 1, 3}, {0, 0, 2}, {1, 1, 1}};
    q_node_t const a = node_at(owned.get(), 0), b = node_at(owned.get(), 1);
    q_node_set_number_of_states(a, 3);
    q_node_set_number_of_states(b, 4);
    set_data(q_node_get_table(b), of_b);
    std::vector<double> of_a;
    for (const auto& row : rows) of_a.insert(of_a.end(), row.begin(), row.end());
    set_data(q_node_get_table(a), of_a);
    const replay expected;
    for (int draw = 0; draw < 1000; ++draw) {
        ASSERT_EQ(q_domain_simulate(owned.get()), q_error_none);
        const std::int64_t state = expected.state(of_b);  // the parent of a is first
        EXPECT_EQ(q_node_get_sampled_state(b), state);
        EXPECT_EQ(q_node_get_sampled_state(a), expected.state(rows[state]));
        EXPECT_EQ(expected.state({1}), 0);
        EXPECT_EQ(q_node_get_sampled_value(node_at(owned.get(), 3)), expected.normal());
    }
}

// Adds up squared deviations from what is expected, in units of what is expected of them.
struct chi_square {
    double sum = 0, freedom = 0;

    // Rare cells are taken together.
    void add_counts(const std::vector<double>& expected, const std::vector<double>& counts) {
        double rare_expected = 0, rare_count = 0, cells = 0;
        const auto add_cell = [&](double e, double c) {
            sum += (c - e) * (c - e) / e;
            ++cells;
        };
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (expected[i] >= 5)
                add_cell(expected[i], counts[i]);
            else
                rare_expected += expected[i], rare_count += counts[i];
        }
        if (rare_expected >= 5) add_cell(rare_expected, rare_count);
        freedom += std::max(cells - 1, 0.0);
    }
    void expect_random() const { EXPECT_LT(std::abs(sum - freedom), 4 * std::sqrt(2 * freedom)) << freedom; }
};

// What many draws from one or several models were like.
struct statistics {
    chi_square states, values;
    double deviations = 0;  // of continuous nodes: standard normal numbers, if all is well
    double products = 0;
    std::size_t numbers = 0, pairs = 0;

    void add(model& tested) {
        const oracle::mixture posterior = oracle::posterior(tested.reference);
        const std::size_t draws = 300;
        q_domain_seed_random(tested.domain, uint32_t(tested.random()));
        std::vector<double> expected, counts(posterior.size());
        for (const oracle::gaussian& part : posterior) expected.push_back(draws * std::exp(part.log_weight));
        for (std::size_t i = 0; i < draws && !testing::Test::HasFailure(); ++i) {
            ASSERT_EQ(q_domain_simulate(tested.domain), q_error_none);
            const std::size_t drawn = configuration(tested);
            ++counts[drawn];
            EXPECT_NEAR(q_domain_get_sampled_log_probability(tested.domain), posterior[drawn].log_weight,
                        1e-9);
            add_values(tested, posterior[drawn]);
            expect_utilities(tested, posterior[drawn].states);
        }
        states.add_counts(expected, counts);
    }

    static std::size_t configuration(const model& tested) {
        std::size_t number = 0;
        for (std::size_t node = 0; node < tested.nodes.size(); ++node) {
            const std::size_t states = tested.reference[node].states;
            const int64_t state = tested.is_discrete(node) ? q_node_get_sampled_state(tested.nodes[node]) : 0;
            EXPECT_TRUE(state >= 0 && state < int64_t(states));
            number = number * states + std::size_t(state);
        }
        return number;
    }

    // Each value given those before it.
    void add_values(const model& tested, oracle::gaussian given) {
        std::vector<double> standard;
        std::size_t number = 0;
        for (std::size_t node = 0; node < tested.nodes.size(); ++node) {
            if (tested.reference[node].is != role::continuous) continue;
            const double value = q_node_get_sampled_value(tested.nodes[node]);
            const double variance = given.covariance[number][number];
            const double deviation = value - given.mean[number];
            const double scale = 1 + std::abs(given.mean[number]);
            if (tested.reference[node].value) {
                EXPECT_EQ(value, *tested.reference[node].value);
            } else if (variance > 1e-6) {
                standard.push_back(deviation / std::sqrt(variance));
                oracle::mixture one{given};
                oracle::observe(one, number, value);
                given = one.front();
            } else {
                EXPECT_NEAR(deviation, 0, 1e-3 * scale);
            }
            ++number;
        }
        for (std::size_t i = 0; i < standard.size(); ++i) {
            values.sum += standard[i] * standard[i];
            deviations += standard[i];
            if (i > 0) products += standard[i] * standard[i - 1];
        }
        values.freedom += double(standard.size());
        numbers += standard.size();
        pairs += std::max(standard.size(), std::size_t{1}) - 1;
    }

    static void expect_utilities(const model& tested, const oracle::list& states) {
        for (std::size_t node = 0; node < tested.nodes.size(); ++node) {
            if (!tested.is_utility(node)) continue;
            std::size_t row = 0;
            for (std::size_t parent : tested.reference[node].parents)
                row = row * tested.reference[parent].states + states[parent];
            EXPECT_EQ(q_node_get_sampled_utility(tested.nodes[node]), tested.reference[node].table[row]);
        }
    }

    void expect_random() const {
        states.expect_random();
        if (numbers == 0) return;
        values.expect_random();
        EXPECT_LT(std::abs(deviations), 4 * std::sqrt(double(numbers)));
        EXPECT_LT(std::abs(products), 4 * std::sqrt(double(pairs)));
    }
};

class drawn : public testing::TestWithParam<kind> {};

TEST_P(drawn, from_the_posterior_in_junction_trees) {
    statistics found;
    for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        model tested(seed, GetParam());
        for (int round = 0; round < 3; ++round) {
            tested.change();
            const answers expected = oracle::enumerate(tested.reference);
            const bool possible = std::isfinite(expected.log_probability) && !expected.noiseless;
            if (possible &&
                q_domain_propagate(tested.domain, q_equilibrium_sum, q_mode_normal) == q_error_none)
                found.add(tested);
        }
    }
    found.expect_random();
}

TEST_P(drawn, from_the_tables_of_nodes) {
    statistics found;
    for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        model tested(seed, GetParam());
        q_domain_uncompile(tested.domain);
        q_domain_retract_findings(tested.domain);
        for (std::size_t node = 0; node < tested.nodes.size(); ++node) {
            tested.reference[node].weights.clear();
            if (tested.reference[node].is == role::decision && tested.random() % 2 == 0)
                tested.select(node, 0);
        }
        found.add(tested);
        // Tables may change between draws.
        tested.change_table();
        found.add(tested);
    }
    found.expect_random();
}

TEST_P(drawn, alike_for_any_number_of_threads) {
    std::vector<double> first;
    for (unsigned level : {1u, 2u, 4u}) {
        model tested(17, GetParam());
        q_domain_set_concurrency_level(tested.domain, level);
        q_domain_set_grain_size(tested.domain, 1);
        ASSERT_EQ(q_domain_propagate(tested.domain, q_equilibrium_sum, q_mode_normal), q_error_none);
        std::vector<double> all;
        for (int i = 0; i < 20; ++i) {
            if (i == 10) q_domain_uncompile(tested.domain);
            if (i == 10) q_domain_retract_findings(tested.domain);
            ASSERT_EQ(q_domain_simulate(tested.domain), q_error_none);
            for (std::size_t node = 0; node < tested.nodes.size(); ++node)
                all.push_back(tested.is_discrete(node) ? double(q_node_get_sampled_state(tested.nodes[node]))
                                                       : q_node_get_sampled_value(tested.nodes[node]));
        }
        if (level == 1) first = all;
        EXPECT_EQ(all, first);
    }
}

constexpr role c = role::chance, d = role::decision, u = role::utility, x = role::continuous;
INSTANTIATE_TEST_SUITE_P(of, drawn,
                         testing::Values(kind{"discrete", {c}}, kind{"compressed", {c}, 0, false, true},
                                         kind{"excluded", {c}, 0, true}, kind{"influence", {c, c, d, u}},
                                         kind{"gaussian", {c, x}},
                                         kind{"excluded_gaussian", {c, x}, 0, true}),
                         [](const auto& tested) { return std::string(tested.param.name); });

// The root of its tree is large enough to be drawn in blocks.
TEST(drawing, from_a_large_clique) {
    oracle::network network(6);
    std::mt19937 random(3);
    for (std::size_t node = 0; node < network.size(); ++node) {
        network[node].states = 4;
        for (std::size_t parent = 0; parent < node; ++parent) network[node].parents.push_back(parent);
        oracle::randomize_table(random, network, node, true);
    }
    model tested(2, {"large", {c}}, network);
    tested.propagate({});
    statistics found;
    for (int i = 0; i < 20; ++i) found.add(tested);
    tested.select(5, 1);
    tested.propagate({});
    found.add(tested);
    found.expect_random();
}

// The joint distribution of b, c and d given a is a product of tables that they share, divided by its sum.
constexpr const char* chain = R"(net {}
    node a { states = ("0" "1"); } node b { states = ("0" "1"); } node c { states = ("0" "1" "2"); }
    node d { states = ("0" "1"); } node e { states = ("0" "1"); }
    potential (a) { data = (0.3 0.7); } potential (b c | a) { data = (1 2 0 4 5 6 6 5 4 3 2 1); }
    potential (c d) { data = (1 9 3 0 2 2); } potential (d) { data = (0.4 0.6); }
    potential (e | d) { data = (0.2 0.8 0.5 0.5); })";

TEST(drawing, of_chain_components) {
    const owned_domain owned(q_net_parse_domain(chain, nullptr, nullptr));
    std::map<std::vector<int64_t>, double> logarithms, counts;
    const double draws = 20000;
    for (const bool compiled : {false, true}) {
        if (compiled) q_domain_compile(owned.get());
        if (compiled) q_domain_propagate(owned.get(), q_equilibrium_sum, q_mode_normal);
        for (int i = 0; i < draws; ++i) {
            ASSERT_EQ(q_domain_simulate(owned.get()), q_error_none);
            std::vector<int64_t> states;
            for (const char* name : {"a", "b", "c", "d", "e"})
                states.push_back(q_node_get_sampled_state(q_domain_get_node_by_name(owned.get(), name)));
            const double logarithm = q_domain_get_sampled_log_probability(owned.get());
            EXPECT_NEAR(logarithms.emplace(states, logarithm).first->second, logarithm, 1e-12);
            counts[states] += 0.5;
        }
    }
    double total = 0;
    chi_square frequencies;
    std::vector<double> expected, found;
    for (const auto& [states, logarithm] : logarithms) {
        total += std::exp(logarithm);
        expected.push_back(2 * draws * std::exp(logarithm));
        found.push_back(2 * counts[states]);
    }
    EXPECT_NEAR(total, 1, 1e-12);
    frequencies.add_counts(expected, found);
    frequencies.expect_random();
    // By hand: the products for b, c, d sum to 49.4 where a is 0.
    const double product = 0.3 * (5 * 3 * 0.4) * 0.8;
    EXPECT_NEAR(logarithms.at({0, 1, 1, 0, 1}), std::log(product / 49.4), 1e-12);

    q_domain_uncompile(owned.get());
    ASSERT_EQ(q_domain_simulate(owned.get()), q_error_none);
    q_node_t const member = q_domain_get_node_by_name(owned.get(), "d");
    const int64_t excluded = q_node_get_sampled_state(member);
    q_table_get_data(q_node_get_table(member))[excluded] = 0;
    ASSERT_EQ(q_domain_simulate(owned.get()), q_error_none);
    EXPECT_EQ(q_node_get_sampled_state(member), 1 - excluded);
}

TEST(drawing, knows_the_logarithm_of_any_product) {
    owned_domain owned(q_domain_new());
    for (int i = 0; i < 3000; ++i) q_node_set_number_of_states(new_node(owned.get(), "cd"), 3);
    for (const bool compiled : {false, true}) {
        if (compiled) q_domain_compile(owned.get());
        if (compiled) q_domain_propagate(owned.get(), q_equilibrium_sum, q_mode_normal);
        ASSERT_EQ(q_domain_simulate(owned.get()), q_error_none);
        EXPECT_NEAR(q_domain_get_sampled_log_probability(owned.get()), -3000 * std::log(3), 1e-9);
    }
}

constexpr const char* functions = R"(net {}
    discrete node n { subtype = number; states = ("" ""); state_values = (2 5); }
    discrete node i { subtype = interval; states = ("" ""); state_values = (0 4 8); }
    utility g {} function f {} function twice {} function at {} function none {} function bad {}
    discrete function h { states = ("u" "v"); }
    potential (n) { data = (0.5 0.5); } potential (i | n) { data = (1 0 0 1); } potential (g | n) { data = (-3 7); }
    potential (f | n g) { model_nodes = (n); model_data = (n + g, n * g); }
    potential (twice | f) { model_nodes = (); model_data = (2 * f); }
    potential (at | i n) { model_nodes = (); model_data = (quantile(i, 0.25) + variance(i) + 100 * probability(n == 5)); }
    potential (bad | n) { model_nodes = (); model_data = (1 / (n - 5)); }
    function asks {} potential (asks | n bad) { model_nodes = (); model_data = (if (n == 5, 7, bad)); })";
constexpr const char* function_of_value = R"(net {} continuous node x {} function f {} function twice {}
    potential (x) { data = (normal(3, 1)); } potential (f | x) { model_nodes = (); model_data = (x + variance(x)); }
    potential (twice | f) { model_nodes = (); model_data = (2 * f); })";

TEST(drawing, gives_functions_their_values) {
    const owned_domain owned(q_net_parse_domain(functions, nullptr, nullptr));
    const owned_domain of_value(q_net_parse_domain(function_of_value, nullptr, nullptr));
    const auto value = [](const owned_domain& of, const char* name) {
        return q_node_get_sampled_value(q_domain_get_node_by_name(of.get(), name));
    };
    const auto state = [&](const char* name) {
        return q_node_get_sampled_state(q_domain_get_node_by_name(owned.get(), name));
    };
    for (int draw = 0; draw < 40; ++draw) {
        for (q_domain_t domain : {owned.get(), of_value.get()}) {
            if (draw == 20) q_domain_compile(domain);
            if (draw == 20) q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
            ASSERT_EQ(q_domain_simulate(domain), q_error_none);
        }
        EXPECT_EQ(value(of_value, "twice"), 2 * value(of_value, "x"));
        EXPECT_EQ(state("i"), state("n"));
        EXPECT_GE(state("h"), 0);
        const bool first = state("n") == 0;
        EXPECT_EQ(value(owned, "f"), first ? -1 : 35);
        EXPECT_EQ(value(owned, "twice"), first ? -2 : 70);
        EXPECT_DOUBLE_EQ(value(owned, "at"), (first ? 1 : 105) + 16.0 / 12);
        EXPECT_EQ(outcome(value(owned, "none")), q_error_computation_failed);
        EXPECT_DOUBLE_EQ(value(owned, "asks"), first ? -1.0 / 3 : 7)
            << "only what is needed need have a value";
        if (first)
            EXPECT_DOUBLE_EQ(value(owned, "bad"), -1.0 / 3);
        else
            EXPECT_EQ(outcome(value(owned, "bad")), q_error_division_by_zero);
    }
}

q_status_t simulated(const owned_domain& domain) { return q_domain_simulate(domain.get()); }

TEST(drawing, is_refused) {
    owned_domain owned = network("cd cd dd", "01");
    q_domain_t const domain = owned.get();
    q_node_t const a = node_at(domain, 0), b = node_at(domain, 1), choice = node_at(domain, 2);
    for (q_node_t node : {a, b, choice}) q_node_set_number_of_states(node, 2);
    EXPECT_EQ(outcome(q_node_get_sampled_state(a)), q_error_usage);
    ASSERT_EQ(simulated(owned), q_error_none);
    EXPECT_EQ(outcome(q_node_get_sampled_value(a)), q_error_usage);
    EXPECT_EQ(outcome(q_node_get_sampled_utility(a)), q_error_usage);

    // A drawn configuration lasts until the structure changes or a draw fails, which uses up no random numbers.
    EXPECT_EQ(q_domain_compile(domain), q_error_none);
    EXPECT_GE(q_node_get_sampled_state(a), 0);
    EXPECT_EQ(simulated(owned), q_error_no_equilibrium);
    EXPECT_EQ(outcome(q_node_get_sampled_state(a)), q_error_usage);
    for (const int64_t state : {1, 0}) {
        q_node_select_state(a, std::size_t(state));
        q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
        EXPECT_EQ(simulated(owned), q_error_none);
        EXPECT_EQ(q_node_get_sampled_state(a), state);
    }
    q_node_select_state(a, 1);
    EXPECT_EQ(simulated(owned), q_error_usage) << "not propagated";
    q_domain_uncompile(domain);
    EXPECT_EQ(simulated(owned), q_error_usage) << "evidence";
    q_domain_retract_findings(domain);
    q_node_enter_finding(choice, 0, 0.5);
    EXPECT_EQ(simulated(owned), q_error_usage) << "a likelihood on a decision";
    q_node_select_state(choice, 1);
    EXPECT_EQ(simulated(owned), q_error_none);
    EXPECT_EQ(q_node_get_sampled_state(choice), 1);
    q_node_set_number_of_states(b, 3);
    EXPECT_EQ(q_domain_get_sampled_log_probability(domain), 1);
    EXPECT_EQ(q_error_code(), q_error_usage);

    set_data(q_node_get_table(a), {0.0, 1e-300});
    for (double wrong : {-1.0, double(NAN), double(INFINITY), 0.0}) {
        set_data(q_node_get_table(b), std::vector<double>(6, wrong));
        q_domain_seed_random(domain, 5);
        EXPECT_EQ(simulated(owned), q_error_invalid_probability_potential) << wrong;
        const double next = uniform_after(domain, 0);
        q_domain_seed_random(domain, 5);
        EXPECT_EQ(uniform_after(domain, 0), next);
    }

    owned_domain continuous = network("cc cc", "01");
    q_node_t const first = node_at(continuous.get(), 0), second = node_at(continuous.get(), 1);
    EXPECT_EQ(simulated(continuous), q_error_none);
    q_node_enter_value(first, 1);
    EXPECT_EQ(simulated(continuous), q_error_usage) << "evidence";
    EXPECT_EQ(outcome(q_node_get_sampled_state(first)), q_error_usage);
    q_node_retract_findings(first);
    for (const auto set : {q_node_set_cg_variance, q_node_set_cg_intercept}) {
        set(first, 0, INFINITY);
        EXPECT_EQ(simulated(continuous), q_error_invalid_probability_potential);
        set(first, 0, 1e300);
    }
    q_node_set_cg_coefficient(second, first, 0, INFINITY);
    EXPECT_EQ(simulated(continuous), q_error_invalid_probability_potential);
    q_node_set_cg_coefficient(second, first, 0, 1e300);
    EXPECT_EQ(simulated(continuous), q_error_computation_failed) << "too large a value";
}

TEST(drawing, is_refused_in_other_modes) {
    owned_domain owned = network("cd cd", "01");
    q_node_set_number_of_states(node_at(owned.get(), 1), 2);
    q_domain_compile(owned.get());
    q_domain_propagate(owned.get(), q_equilibrium_max, q_mode_normal);
    EXPECT_EQ(simulated(owned), q_error_usage);
    q_domain_propagate(owned.get(), q_equilibrium_sum, q_mode_fast_retraction);
    EXPECT_EQ(simulated(owned), q_error_none) << "nothing is observed";
    q_node_enter_finding(node_at(owned.get(), 1), 0, 0.5);
    q_domain_propagate(owned.get(), q_equilibrium_sum, q_mode_fast_retraction);
    EXPECT_EQ(simulated(owned), q_error_usage);
}

TEST(drawing, survives_lack_of_memory) {
    if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    for (const bool compiled : {false, true})
        for (const char* text : {chain, functions, function_of_value}) {
            const auto build = [=] {
                owned_domain made(q_net_parse_domain(text, nullptr, nullptr));
                q_domain_simulate(made.get());
                q_node_t const member = q_domain_get_node_by_name(made.get(), "d");  // of a chain component
                if (member != nullptr) set_data(q_node_get_table(member), {0.0, 1.0});
                if (compiled) q_domain_compile(made.get());
                if (compiled) q_domain_propagate(made.get(), q_equilibrium_sum, q_mode_normal);
                return made;
            };
            const auto draw = [](q_domain_t domain) {
                const q_status_t status = q_domain_simulate(domain);
                q_node_t const member = q_domain_get_node_by_name(domain, "d");
                q_node_t const f = q_domain_get_node_by_name(domain, "twice");
                EXPECT_TRUE(status != q_error_none || !member || q_node_get_sampled_state(member) == 1);
                if (status != q_error_none || f == nullptr) return status;
                return outcome(q_node_get_sampled_value(f));
            };
            expect_survives_lack_of_memory({compiled ? "compiled" : "not compiled", build, draw});
        }
}

}  // namespace
