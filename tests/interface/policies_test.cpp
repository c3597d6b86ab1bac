// Policies after updating, against enumeration of the joint distribution, and by hand.
#include "fault_plan.h"
#include "model.h"
#include "scenarios.h"

using namespace scenarios;

namespace {

constexpr role c = role::chance, d = role::decision, u = role::utility;

double utility_of(const oracle::network& asked) {
    double sum = 0;
    for (const auto& moments : oracle::enumerate(asked).moments_of) sum += moments.mean;
    return sum;
}

// Some policies are uniform, some pure.
oracle::network random_diagram(unsigned seed) {
    std::mt19937 random(seed);
    oracle::network made =
        oracle::random_network(random, {5 + seed % 3, 3, 2, seed % 2 == 0, {c, d, d, u, u}});
    for (variable& v : made) {
        const std::size_t start = random() % 3;
        for (std::size_t entry = 0, chosen = 0; v.is == d && start < 2 && entry < v.table.size(); ++entry) {
            if (entry % v.states == 0) chosen = entry + random() % v.states;
            v.table[entry] = start == 0 || entry == chosen ? 1 : 0;
        }
    }
    return made;
}

// Propagated, with evidence unless that is impossible.
struct diagram : model {
    oracle::list decisions;

    diagram(unsigned the_seed, oracle::network made, bool excludes = false)
        : model(the_seed, {"diagram", {c, d, u}, 0, excludes}, std::move(made)) {
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (reference[i].is == d) decisions.push_back(i);
    }
    explicit diagram(unsigned the_seed) : diagram(the_seed, random_diagram(the_seed), the_seed % 5 == 0) {
        for (std::size_t changes = random() % 4; changes > 0; --changes) change_evidence();
        while (is_invalid() || request().of(domain) != q_error_none) {  // perhaps by what is excluded
            q_domain_uncompile(domain);
            compile();
            start_again();
        }
        read_policies();
    }

    q_status_t update() {
        const q_status_t status = q_domain_update_policies(domain);
        read_policies();
        return status;
    }
    void read_policies() {
        for (std::size_t i : decisions) reference[i].table = data_of(q_node_get_table(nodes[i]));
    }
    void expect_right_results() {
        expect_results(oracle::enumerate(reference), {});
        for (std::size_t i : decisions)
            record.insert(record.end(), reference[i].table.begin(), reference[i].table.end());
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

TEST(policies, are_a_local_optimum_not_below_the_start) {
    std::size_t changed = 0, observed = 0;
    for (unsigned seed = 1; seed <= 8000 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        diagram tested(seed);
        const oracle::network before = tested.reference;
        ASSERT_EQ(tested.update(), q_error_none);
        tested.expect_right_results();
        tested.expect_policies(before);
        tested.expect_local_optimum();
        EXPECT_GE(utility_of(tested.reference), utility_of(before) - 1e-10 * tested.scale);
        changed += !std::ranges::equal(before, tested.reference, {}, &variable::table, &variable::table);
        observed += q_domain_evidence_is_propagated(tested.domain);
        const numbers read = std::exchange(tested.record, {});
        ASSERT_EQ(tested.update(), q_error_none);
        tested.expect_right_results();
        EXPECT_EQ(tested.record, read);
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
        diagram tested(seed, made), best(seed, made);
        for (auto i = best.decisions.rbegin(); i != best.decisions.rend(); ++i)
            for (std::size_t entry = 0; entry < made[*i].table.size(); ++entry) {
                const oracle::network other = best.with_pure_entry(*i, entry);
                if (entry % made[*i].states == 0 || utility_of(other) > utility_of(best.reference))
                    best.reference = other;
            }
        tested.start_again();
        ASSERT_EQ(request().of(tested.domain), q_error_none);
        ASSERT_EQ(tested.update(), q_error_none);
        tested.expect_right_results();
        EXPECT_NEAR(q_domain_get_expected_utility(tested.domain), utility_of(best.reference),
                    1e-10 * tested.scale);
    }
}

// Of a decision, node 1; the tables are those of the first nodes.
void expect_update(const owned_domain& domain, const std::vector<numbers>& tables, const numbers& updated) {
    const nodes n = nodes_of(domain.get());
    for (std::size_t i = 0; i < tables.size(); ++i) set_data(q_node_get_table(n[i]), tables[i]);
    ASSERT_EQ(propagate(domain), q_error_none);
    ASSERT_EQ(q_domain_update_policies(domain.get()), q_error_none);
    EXPECT_EQ(data_of(q_node_get_table(n[1])), updated);
}

TEST(policies, keep_what_is_optimal) {
    const struct {
        numbers utilities, old, updated;
    } rows[] = {{{5, 5, 5}, {.25, .5, .25}, {.25, .5, .25}},
                {{1, 2, 3}, {1, 0, 0}, {0, 0, 1}},
                {{3, 1, 3}, {.25, .25, .5}, {.25 / .75, 0, .5 / .75}},
                {{3, 1, 3}, {0, .5, .5}, {0, 0, 1}},
                {{3, 1, 3}, {0, 1, 0}, {.5, 0, .5}},
                {{1, 1 - 5e-13, 0}, {.25, .5, .25}, {.25 / .75, .5 / .75, 0}},
                {{1, 1 - 2e-12, 0}, {.25, .5, .25}, {1, 0, 0}},
                {{-1, -1 - 5e-13, -2}, {0, 1, 0}, {0, 1, 0}},
                {{-1, -1 - 2e-12, -2}, {0, .5, .5}, {1, 0, 0}},
                {{0, -1e-9, 0}, {.5, .25, .25}, {.5 / .75, 0, .25 / .75}},
                {{-7, 0, -1e-9}, {0, 0, 1}, {0, 1, 0}}};
    const owned_domain domain = network("cd dd uo", "02 12 01");
    const nodes n = nodes_of(domain.get());
    q_node_set_number_of_states(n[0], std::size(rows));
    q_node_set_number_of_states(n[1], 3);
    numbers weights, utilities, old, updated;
    for (const auto& row : rows) {
        weights.push_back(double(&row - rows + 1));
        for (std::size_t i = 0; i < 3; ++i) {
            utilities.push_back(row.utilities[i]);
            old.push_back(row.old[i]);
            updated.push_back(row.updated[i]);
        }
    }
    expect_update(domain, {weights, old, utilities}, updated);
}

// Where utilities cancel each other, rounding decides nothing.
TEST(policies, keep_what_differs_by_rounding) {
    owned_domain domain = network("cd dd uo", "02 12");
    const nodes n = nodes_of(domain.get());
    for (q_node_t node : {n[0], n[1]}) q_node_set_number_of_states(node, 3);
    const numbers cancelling{7, 30, 49, 0, -15, -21, -1, 0, -1};  // 0 on average, if the numbers were exact
    expect_update(domain, {{.1, .2, .7}, {.25, .5, .25}, cancelling}, {.25, .5, .25});
}

// Steps: x (exclude node 0), c(ompile), p(ropagate), m(ax equilibrium), f(ast retraction), o(bserve), s (other state),
// t(able touched) of node 0.
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
        {diagram, "cpt", q_error_usage},
        {diagram, "cop", q_error_none},
        {diagram, "xocps", q_error_usage},
        {diagram, "xocp", q_error_none},
        {choice, "c", q_error_usage},
        {choice, "cpt", q_error_usage},
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
            if (step == 't') q_node_touch_table(n[0]);
            const request asked{step == 'm' ? q_equilibrium_max : q_equilibrium_sum,
                                step == 'f' ? q_mode_fast_retraction : q_mode_normal};
            if (std::strchr("pmf", step) != nullptr) {
                EXPECT_EQ(asked.of(domain.get()), q_error_none);
            }
        }
        const std::string before = digest(domain.get());
        EXPECT_EQ(outcome(q_domain_update_policies(domain.get())), row.code);
        EXPECT_EQ(digest(domain.get()), before);  // all utilities are 0
    }
}

TEST(policies, to_the_bit_for_any_number_of_threads) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::vector<std::unique_ptr<diagram>> tested;
        for (unsigned level = 1; level <= 4; level *= 2) {
            diagram& one = *tested.emplace_back(std::make_unique<diagram>(seed));
            q_domain_set_concurrency_level(one.domain, level);
            q_domain_set_grain_size(one.domain, 1);
            EXPECT_EQ(one.update(), q_error_none);
            one.expect_right_results();
            EXPECT_TRUE(one.has_recorded_the_same(*tested[0])) << seed << ' ' << level;
        }
    }
}

TEST(policies, survive_lack_of_memory) {
    if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    for (unsigned run = 2; run < 62; ++run) {
        bool fired = true;  // else there is no later allocation
        for (std::size_t n = 0; fired && !HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "run " << run << ", allocation " << n);
            diagram tested(run / 2);
            const oracle::network before = tested.reference;
            fault_plan plan(n, run % 2 == 0);
            const q_status_t status = q_domain_update_policies(tested.domain);
            fired = plan.stop();
            EXPECT_TRUE(status == q_error_none || (fired && status == q_error_no_memory)) << status;
            tested.read_policies();
            tested.expect_policies(before);
            tested.expect_entered_evidence();
            const bool readable = q_domain_equilibrium_is(tested.domain, q_equilibrium_sum) == 1;
            EXPECT_TRUE(readable || run % 2 == 0);  // memory was lacking lastingly
            if (readable && q_domain_evidence_to_propagate(tested.domain) == 0) tested.expect_right_results();
            EXPECT_EQ(request().of(tested.domain), q_error_none);
            EXPECT_EQ(tested.update(), q_error_none);
            tested.expect_right_results();
            tested.owned.reset();
            EXPECT_EQ(plan.leaked(), 0u);
        }
    }
}

// What is observed of x is beyond the doubles either way, and cancels.
TEST(policies, are_found_where_evidence_is_far_out) {
    const owned_domain domain = network("cd dd uo", "02 12");
    const nodes n = nodes_of(domain.get());
    for (q_node_t node : {n[0], n[1]}) q_node_set_number_of_states(node, 2);
    for (int i = 0; i < 700; ++i) {
        q_node_t copy = new_chance(domain.get(), ("copy" + std::to_string(i)).c_str(), 2, {n[0]});
        set_data(q_node_get_table(copy), {0.95, 0.05, 0.05, 0.95});
        q_node_select_state(copy, i < 350 ? 0 : 1);
    }
    expect_update(domain, {{1, 1}, {1, 1}, {1, 0, 0, 3}}, {0, 1});
    EXPECT_NEAR(q_domain_get_expected_utility(domain.get()), 1.5, 1e-9);
}

}  // namespace
