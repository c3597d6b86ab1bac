// Policies after updating, against enumeration of the joint distribution, and by hand.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

#include "allocation_faults.h"
#include "enumeration.h"
#include "scenarios.h"

using namespace scenarios;

namespace {

using oracle::role, oracle::variable;

double utility_of(const oracle::network& asked) {
    double sum = 0;
    for (const auto& moments : oracle::enumerate(asked).moments_of) sum += moments.mean;
    return sum;
}

// The same diagram in the oracle and in the library, where its nodes are created in any order.
struct diagram {
    oracle::network reference;
    owned_domain owned{q_domain_new()};
    q_domain_t domain = owned.get();
    nodes n{reference.size()};
    oracle::list decisions;
    double scale = 0;  // of the sum of the utilities

    diagram(std::mt19937& random, oracle::network made) : reference(std::move(made)) {
        oracle::list order(n.size());
        std::iota(order.begin(), order.end(), 0);
        std::ranges::shuffle(order, random);
        for (std::size_t i : order) n[i] = new_node(domain, &"cd\0dd\0uo"[3 * int(reference[i].is)]);
        nodes excluded;
        for (std::size_t i = 0; i < n.size(); ++i) {
            const variable& v = reference[i];
            if (v.is != role::utility) q_node_set_number_of_states(n[i], v.states);
            for (std::size_t parent : v.parents) q_node_add_parent(n[i], n[parent]);
            set_data(q_node_get_table(n[i]), v.table);
            for (std::size_t state = 0; state < v.weights.size(); ++state)
                q_node_enter_finding(n[i], state, v.weights[state]);
            if (v.excluded) excluded.push_back(n[i]);
            if (v.is == role::decision) decisions.push_back(i);
            for (double entry : v.table) scale += v.is == role::utility ? std::abs(entry) : 0;
        }
        excluded.push_back(nullptr);
        EXPECT_EQ(q_domain_set_excluded_nodes(domain, excluded.data()), q_error_none);
        EXPECT_EQ(q_domain_compile(domain), q_error_none);
    }

    q_status_t propagate() {
        const q_status_t status = q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
        read_policies();
        return status;
    }
    q_status_t update() {
        const q_status_t status = q_domain_update_policies(domain);
        read_policies();
        return status;
    }
    void read_policies() {
        for (std::size_t i : decisions) reference[i].table = data_of(q_node_get_table(n[i]));
    }
    bool is_open(std::size_t i) const { return reference[i].states > 1 && reference[i].weights.empty(); }
    // With all weight of its row on this entry of a policy.
    oracle::network with_pure_entry(std::size_t decision, std::size_t entry) const {
        oracle::network changed = reference;
        const std::size_t states = changed[decision].states;
        std::fill_n(&changed[decision].table[entry / states * states], states, 0.0);
        changed[decision].table[entry] = 1;
        return changed;
    }
    // Whether the parents can be in the states of the row, given the evidence, by some policies.
    bool can_occur(std::size_t decision, std::size_t row) const {
        oracle::network asked = reference;
        for (std::size_t i : decisions) std::ranges::fill(asked[i].table, 1.0);
        const oracle::list& parents = asked[decision].parents;
        for (auto parent = parents.rbegin(); parent != parents.rend(); ++parent) {
            variable& v = asked[*parent];
            v.weights.resize(v.states, v.weights.empty() ? 1 : 0);
            for (std::size_t state = 0; state < v.states; ++state)
                v.weights[state] *= state == row % v.states;
            row /= v.states;
        }
        return oracle::enumerate(asked).log_probability > -INFINITY;
    }

    // Results are those of the policies and of the evidence that is propagated. Returns what is read.
    numbers expect_results() const {
        oracle::network asked = reference;
        for (std::size_t i = 0; i < n.size(); ++i)
            if (asked[i].is != role::utility && !asked[i].excluded && !q_node_evidence_is_propagated(n[i]))
                asked[i].weights.clear();
        const oracle::answers expected = oracle::enumerate(asked);
        numbers read;
        const auto expect_near = [&](double found, double number, double slack) {
            read.push_back(found);
            EXPECT_TRUE(std::abs(found - number) <= slack) << found << ", not " << number;
        };
        const bool one_tree = !q_junction_tree_get_next(q_domain_get_first_junction_tree(domain));
        for (std::size_t i = 0; i < n.size(); ++i) {
            read.insert(read.end(), asked[i].table.begin(), asked[i].table.end());
            for (std::size_t state = 0; asked[i].is != role::utility && state < asked[i].states; ++state) {
                expect_near(q_node_get_belief(n[i], state), expected.beliefs[i][state], 1e-12);
                const numbers& given = expected.utilities[i][state];
                const double sum = std::accumulate(given.begin(), given.end(), 0.0);
                if (one_tree) expect_near(q_node_get_expected_utility(n[i], state), sum, 1e-10 * scale);
            }
        }
        expect_near(q_domain_get_expected_utility(domain), utility_of(asked), 1e-10 * scale);
        expect_near(q_domain_get_log_normalization_constant(domain), expected.log_probability, 1e-11);
        return read;
    }
    // Rows are as they were, or may be changed and are distributions.
    void expect_policies(const oracle::network& before) const {
        for (std::size_t i : decisions)
            for (std::size_t row = 0, k = reference[i].states; row < reference[i].table.size() / k; ++row) {
                const double* now = &reference[i].table[row * k];
                if (std::memcmp(now, &before[i].table[row * k], 8 * k) == 0) continue;
                EXPECT_TRUE(is_open(i) && can_occur(i, row)) << "row " << row << " of node " << i;
                EXPECT_NEAR(std::accumulate(now, now + k, 0.0), 1, 1e-15);
                EXPECT_GE(*std::min_element(now, now + k), 0);
            }
    }
    void expect_local_optimum() const {
        const double most = utility_of(reference) + 1e-10 * scale;
        for (std::size_t i : decisions)
            for (std::size_t entry = 0; is_open(i) && entry < reference[i].table.size(); ++entry)
                EXPECT_LE(utility_of(with_pure_entry(i, entry)), most) << "entry " << entry << " of " << i;
    }
};

// Propagated; the same for the same seed, with evidence unless that is impossible.
diagram random_diagram(unsigned seed) {
    constexpr role c = role::chance, d = role::decision, u = role::utility;
    std::mt19937 random(seed);
    oracle::network made =
        oracle::random_network(random, {5 + seed % 3, 3, 2, seed % 2 == 0, {c, d, d, u, u}});
    oracle::network bare = made;
    for (std::size_t i = 0; i < made.size(); ++i) {
        variable& v = made[i];
        if (v.is == u) continue;
        const std::size_t start = random() % 3, rare = random() % (seed % 3 == 0 ? 8 : 30);
        for (std::size_t entry = 0, chosen = 0; v.is == d && start < 2 && entry < v.table.size(); ++entry) {
            if (entry % v.states == 0) chosen = entry + random() % v.states;
            v.table[entry] = start == 0 || entry == chosen ? 1 : 0;
        }
        bare[i].table = v.table;
        v.excluded = i > 0 && seed % 5 == 0 && rare > 0 && rare < 5;
        if (!v.excluded && (rare > 1 || v.states == 1)) continue;
        v.weights.assign(v.states, rare == 0 && v.is == c ? 0.25 : 0);
        v.weights[random() % v.states] = 1;
    }
    if (diagram result(random, made); result.propagate() == q_error_none) return result;
    diagram result(random, bare);
    EXPECT_EQ(result.propagate(), q_error_none);
    return result;
}

TEST(policies, are_a_local_optimum_not_below_the_start) {
    std::size_t changed = 0, observed = 0;
    for (unsigned seed = 1; seed <= 8000 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        diagram tested = random_diagram(seed);
        const oracle::network before = tested.reference;
        ASSERT_EQ(tested.update(), q_error_none);
        const numbers updated = tested.expect_results();
        tested.expect_policies(before);
        tested.expect_local_optimum();
        EXPECT_GE(utility_of(tested.reference), utility_of(before) - 1e-10 * tested.scale);
        changed += !std::ranges::equal(before, tested.reference, {}, &variable::table, &variable::table);
        observed += q_domain_evidence_is_propagated(tested.domain);
        ASSERT_EQ(tested.update(), q_error_none);
        EXPECT_EQ(tested.expect_results(), updated);
    }
    EXPECT_GT(std::min(changed, observed), 1500u);
}

// Backward induction. The first chance variable is hidden; later ones may be observed before the next decision.
TEST(policies, are_a_global_optimum_with_perfect_recall) {
    for (unsigned seed = 1; seed <= 200 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        oracle::network made;
        oracle::list known, all;
        for (const char letter : std::string(seed % 4 == 0 ? "ccdcdcduuu" : "ccdcduu")) {
            variable& v = made.emplace_back();
            const std::size_t number = made.size() - 1;
            v.is = letter == 'c' ? role::chance : letter == 'd' ? role::decision : role::utility;
            v.states = letter == 'u' ? 1 : seed % 4 == 0 ? 2 : 2 + random() % 2;
            v.parents = letter == 'd' ? known : all;
            std::ranges::shuffle(v.parents, random);
            if (letter != 'd') v.parents.resize(std::min<std::size_t>(all.size(), 2));
            oracle::randomize_table(random, made, number, seed % 2 == 0);
            if (letter == 'd') std::ranges::fill(v.table, 1.0);
            if (letter != 'u') all.push_back(number);
            if (letter == 'd' || (letter == 'c' && number > 0 && random() % 3 > 0)) known.push_back(number);
        }
        diagram tested(random, made), best(random, made);
        for (auto i = best.decisions.rbegin(); i != best.decisions.rend(); ++i)
            for (std::size_t entry = 0; entry < made[*i].table.size(); ++entry) {
                const oracle::network other = best.with_pure_entry(*i, entry);
                if (entry % made[*i].states == 0 || utility_of(other) > utility_of(best.reference))
                    best.reference = other;
            }
        ASSERT_EQ(tested.propagate(), q_error_none);
        ASSERT_EQ(tested.update(), q_error_none);
        EXPECT_NEAR(q_domain_get_expected_utility(tested.domain), utility_of(best.reference),
                    1e-10 * tested.scale);
    }
}

TEST(policies, keep_what_is_optimal) {
    const struct {
        numbers utilities, old, updated;
    } rows[] = {{{5, 5, 5}, {.25, .5, .25}, {.25, .5, .25}},
                {{1, 2, 3}, {1, 0, 0}, {0, 0, 1}},
                {{1, 2, 3}, {0, 0, 1}, {0, 0, 1}},
                {{3, 1, 3}, {.25, .25, .5}, {.25 / .75, 0, .5 / .75}},
                {{3, 1, 3}, {0, .5, .5}, {0, 0, 1}},
                {{3, 1, 3}, {0, 1, 0}, {.5, 0, .5}},
                {{3, 3, 3}, {0, 1, 0}, {0, 1, 0}},
                {{1, 1 - 5e-13, 0}, {.25, .5, .25}, {.25 / .75, .5 / .75, 0}},
                {{1, 1 - 2e-12, 0}, {.25, .5, .25}, {1, 0, 0}},
                {{-1, -1 - 5e-13, -2}, {0, 1, 0}, {0, 1, 0}},
                {{-1, -1 - 5e-13, -2}, {0, .5, .5}, {0, 1, 0}},
                {{-1, -1 - 2e-12, -2}, {0, .5, .5}, {1, 0, 0}},
                {{0, -1e-9, 0}, {.5, .25, .25}, {.5 / .75, 0, .25 / .75}},
                {{-7, 0, -1e-9}, {0, 0, 1}, {0, 1, 0}}};
    owned_domain domain(q_domain_new());
    q_node_t chance = new_chance(domain.get(), "C", std::size(rows));
    q_node_t decision = new_chance(domain.get(), "D", 3, {chance}, "dd");
    q_node_t utility = new_chance(domain.get(), "U", 0, {chance, decision}, "uo");
    numbers utilities, old, updated;
    for (const auto& row : rows) {
        utilities.insert(utilities.end(), row.utilities.begin(), row.utilities.end());
        old.insert(old.end(), row.old.begin(), row.old.end());
        updated.insert(updated.end(), row.updated.begin(), row.updated.end());
        q_table_get_data(q_node_get_table(chance))[&row - rows] = double(&row - rows + 1);
    }
    set_data(q_node_get_table(decision), old);
    set_data(q_node_get_table(utility), utilities);
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    ASSERT_EQ(q_domain_update_policies(domain.get()), q_error_none);
    EXPECT_EQ(data_of(q_node_get_table(decision)), updated);
}

// Where utilities cancel each other, rounding decides nothing.
TEST(policies, keep_what_differs_by_rounding) {
    owned_domain domain = network("cd dd uo", "02 12");
    const nodes n = nodes_of(domain.get());
    const numbers old{.25, .5, .25};
    for (q_node_t node : {n[0], n[1]}) q_node_set_number_of_states(node, 3);
    set_data(q_node_get_table(n[0]), {.1, .2, .7});
    set_data(q_node_get_table(n[1]), old);
    set_data(q_node_get_table(n[2]),
             {7, 30, 49, 0, -15, -21, -1, 0, -1});  // 0 on average, if the numbers were exact
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    ASSERT_EQ(q_domain_update_policies(domain.get()), q_error_none);
    EXPECT_EQ(data_of(q_node_get_table(n[1])), old);
}

// Steps: x (exclude node 0), c(ompile), p(ropagate), m(ax equilibrium), f(ast retraction), o(bserve), s (other state), r(etract), t(able touched) of node 0.
TEST(policies, need_a_clean_domain) {
    EXPECT_EQ(outcome(q_domain_update_policies(nullptr)), q_error_usage);
    const char *const diagram = "cd dd uo", *const choice = "cd dd", *const chance = "cd cd";
    const struct {
        const char *nodes, *steps;
        q_error_t code;
    } rows[] = {
        {diagram, "", q_error_not_compiled},
        {diagram, "c", q_error_usage},
        {diagram, "cpo", q_error_usage},
        {diagram, "copr", q_error_usage},
        {diagram, "cpt", q_error_usage},
        {diagram, "cop", q_error_none},
        {diagram, "xocps", q_error_usage},
        {diagram, "xocpt", q_error_usage},
        {diagram, "xocp", q_error_none},
        {choice, "", q_error_not_compiled},
        {choice, "c", q_error_usage},
        {choice, "cpt", q_error_usage},
        {choice, "cop", q_error_none},
        {chance, "cm", q_error_usage},  // never with decisions or utilities, nor are those that follow
        {chance, "cof", q_error_usage},
        {chance, "cf", q_error_none}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.nodes + std::string(": ") + row.steps);
        const owned_domain domain = network(row.nodes, row.nodes == diagram ? "01 02" : "01");
        const nodes n = nodes_of(domain.get());
        for (q_node_t node : {n[0], n[1]}) q_node_set_number_of_states(node, 2);
        for (char step : std::string(row.steps)) {
            if (step == 'c') q_domain_compile(domain.get());
            if (step == 'o') q_node_select_state(n[0], 1);
            if (step == 's') q_node_select_state(n[0], 0);
            if (step == 'x') {
                const q_node_t list[] = {n[0], nullptr};
                q_domain_set_excluded_nodes(domain.get(), list);
            }
            if (step == 'r') q_node_retract_findings(n[0]);
            if (step == 't') q_node_touch_table(n[0]);
            if (std::string("pmf").find(step) == std::string::npos) continue;
            EXPECT_EQ(q_domain_propagate(domain.get(), step == 'm' ? q_equilibrium_max : q_equilibrium_sum,
                                         step == 'f' ? q_mode_fast_retraction : q_mode_normal),
                      q_error_none);
        }
        const std::string before = digest(domain.get());
        EXPECT_EQ(outcome(q_domain_update_policies(domain.get())), row.code);
        EXPECT_EQ(digest(domain.get()), before);  // all utilities are 0
    }
}

TEST(policies, to_the_bit_for_any_number_of_threads) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        numbers first;
        for (unsigned level = 1; level <= 4; level *= 2) {
            diagram tested = random_diagram(seed);
            q_domain_set_concurrency_level(tested.domain, level);
            q_domain_set_grain_size(tested.domain, 1);
            EXPECT_EQ(tested.update(), q_error_none);
            const numbers read = tested.expect_results();
            if (level == 1) first = read;
            ASSERT_EQ(read.size(), first.size());
            EXPECT_EQ(std::memcmp(read.data(), first.data(), 8 * read.size()), 0) << seed << ' ' << level;
        }
    }
}

TEST(policies, survive_lack_of_memory) {
    if (!allocation_faults::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    for (unsigned run = 2; run < 62; ++run) {
        bool fired = true;  // else there is no later allocation
        for (std::size_t n = 0; fired && !HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "run " << run << ", allocation " << n);
            diagram tested = random_diagram(run / 2);
            const oracle::network before = tested.reference;
            allocation_faults plan(n, run % 2 == 0);
            const q_status_t status = q_domain_update_policies(tested.domain);
            fired = plan.stop();
            tested.read_policies();
            EXPECT_TRUE(status == q_error_none || (fired && status == q_error_no_memory)) << status;
            tested.expect_policies(before);
            for (std::size_t i = 0; i < before.size(); ++i)
                for (std::size_t state = 0; state < before[i].weights.size(); ++state)
                    EXPECT_EQ(q_node_get_entered_finding(tested.n[i], state), before[i].weights[state]);
            const bool readable = q_domain_equilibrium_is(tested.domain, q_equilibrium_sum) == 1;
            EXPECT_TRUE(readable || run % 2 == 0);  // memory was lacking lastingly
            if (readable) tested.expect_results();
            EXPECT_EQ(tested.propagate(), q_error_none);
            EXPECT_EQ(tested.update(), q_error_none);
            tested.expect_results();
            tested.owned.reset();
            EXPECT_EQ(plan.leaked(), 0u);
        }
    }
}

// What is observed of x is beyond the doubles either way, and cancels.
TEST(policies, are_found_where_evidence_is_far_out) {
    owned_domain domain = network("cd dd uo", "02 12");
    const std::vector<q_node_t> n = nodes_of(domain.get());
    for (q_node_t node : {n[0], n[1]}) q_node_set_number_of_states(node, 2);
    set_data(q_node_get_table(n[2]), {1, 0, 0, 3});
    for (int i = 0; i < 700; ++i) {
        q_node_t copy = new_chance(domain.get(), ("copy" + std::to_string(i)).c_str(), 2, {n[0]});
        set_data(q_node_get_table(copy), {0.95, 0.05, 0.05, 0.95});
        q_node_select_state(copy, i < 350 ? 0 : 1);
    }
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    ASSERT_EQ(q_domain_update_policies(domain.get()), q_error_none);
    EXPECT_EQ(data_of(q_node_get_table(n[1])), (std::vector<double>{0, 1}));
    EXPECT_NEAR(q_domain_get_expected_utility(domain.get()), 1.5, 1e-9);
}

}  // namespace
