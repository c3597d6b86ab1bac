// A network in the library and in the oracle, through random changes of evidence, tables and structure.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <ostream>

#include <gmock/gmock.h>

#include "enumeration.h"
#include "network_building.h"

using oracle::answers, oracle::role, oracle::variable;

struct kind {
    const char* name;
    std::vector<role> roles;
    unsigned seeds = 400;
    bool excludes = false, compresses = false;
};
inline std::ostream& operator<<(std::ostream& out, const kind& shown) { return out << shown.name; }

// What is soaked, fuzzed and compared in tests.
inline const kind kinds[] = {
    {"discrete", {role::chance}, 1500},
    {"compressed", {role::chance}, 500, false, true},
    {"excluded", {role::chance}, 500, true},
    {"influence", {role::chance, role::chance, role::decision, role::utility}, 800},
    {"gaussian", {role::chance, role::continuous}, 800},
    {"excluded_influence", {role::chance, role::chance, role::decision, role::utility}, 300, true},
    {"excluded_gaussian", {role::chance, role::continuous}, 300, true}};
inline const kind function_kinds[] = {
    {"gaussian_functions", {role::chance, role::chance, role::continuous}, 300},
    {"influence_functions", {role::chance, role::chance, role::decision, role::utility}, 300}};

// A propagation of a domain, or of its trees one by one, each from some clique or not.
struct request {
    q_equilibrium_t equilibrium = q_equilibrium_sum;
    q_mode_t mode = q_mode_normal;
    std::vector<q_clique_t> cliques = {};
    bool from_cliques = false;

    q_status_t of(q_domain_t domain) const {
        q_status_t status = cliques.empty() ? q_domain_propagate(domain, equilibrium, mode) : q_error_none;
        for (q_clique_t clique : cliques)
            if (status == q_error_none)
                status = from_cliques ? q_clique_propagate(clique, equilibrium, mode)
                                      : q_junction_tree_propagate(q_clique_get_junction_tree(clique),
                                                                  equilibrium, mode);
        return status;
    }
};

// The same network in the library and in the oracle. With zeros in tables and relations without noise if the seed is
// even; with positive weights only if 3 divides it. The library's nodes are created in any order.
struct model {
    const kind of;
    const unsigned seed;
    const bool with_zeros = seed % 2 == 0, positive = seed % 3 == 0;
    std::mt19937 random{seed};
    owned_domain owned{q_domain_new()};
    q_domain_t const domain = owned.get();
    oracle::network reference;
    std::vector<q_node_t> nodes;
    bool compressed = false;
    double exact = 1e-12;
    double scale = 0;            // of the sum of the utilities
    std::vector<double> record;  // of all that was read
    std::size_t successes = 0;
    double largest_difference = 0;  // as a part of what is allowed

    // Of the given network, or of a random one.
    model(unsigned the_seed, const kind& the_kind, oracle::network made = {})
        : of(the_kind), seed(the_seed), reference(std::move(made)) {
        if (reference.empty())
            reference = oracle::random_network(random, {1 + seed % 8, 4, 3, with_zeros, of.roles});
        nodes.resize(reference.size());
        oracle::list order(nodes.size());
        std::iota(order.begin(), order.end(), 0);
        std::ranges::shuffle(order, random);
        for (std::size_t node : order)
            nodes[node] = new_node(domain, &"cd\0dd\0uo\0cc"[3 * int(reference[node].is)]);
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            const variable& v = reference[node];
            if (is_discrete(node)) q_node_set_number_of_states(nodes[node], v.states);
            for (const oracle::list& parents : {v.parents, v.regressors})
                for (std::size_t parent : parents) q_node_add_parent(nodes[node], nodes[parent]);
            write_table(node);
        }
        compile();
    }

    bool is_discrete(std::size_t node) const { return reference[node].is < role::utility; }
    bool is_utility(std::size_t node) const { return reference[node].is == role::utility; }
    // The trees of a domain, and that of a node: null for a utility that depends on nothing, which is in any.
    std::vector<q_junction_tree_t> trees() const {
        std::vector<q_junction_tree_t> found;
        for (auto tree = q_domain_get_first_junction_tree(domain); tree != nullptr;
             tree = q_junction_tree_get_next(tree))
            found.push_back(tree);
        return found;
    }
    q_junction_tree_t tree_of(std::size_t node) const {
        if (!is_utility(node)) return q_node_get_junction_tree(nodes[node]);
        for (std::size_t parent : reference[node].parents)
            if (!reference[parent].excluded) return tree_of(parent);
        return nullptr;
    }

    void compile() {
        compressed = false;
        std::vector<q_node_t> excluded;
        for (std::size_t node = 1; node < nodes.size(); ++node) {
            variable& v = reference[node];
            v.excluded = of.excludes && is_discrete(node) && random() % 3 == 0;
            if (v.excluded) excluded.push_back(nodes[node]);
            if (v.excluded) select(node, random() % v.states);
        }
        excluded.push_back(nullptr);
        ASSERT_EQ(q_domain_set_excluded_nodes(domain, excluded.data()), q_error_none);
        const auto method = q_triangulation_method_t(q_triangulate_clique_size + random() % 6);
        ASSERT_EQ(q_domain_triangulate(domain, method), q_error_none);
        ASSERT_EQ(q_domain_compile(domain), q_error_none);
    }

    void write_table(std::size_t node) {
        const variable& v = reference[node];
        for (std::size_t row = 0; row < v.equations.size(); ++row) {
            q_node_set_cg_variance(nodes[node], row, v.equations[row].front());
            q_node_set_cg_intercept(nodes[node], row, v.equations[row].back());
            for (std::size_t i = 0; i < v.regressors.size(); ++i)
                q_node_set_cg_coefficient(nodes[node], nodes[v.regressors[i]], row, v.equations[row][i + 1]);
        }
        if (v.is == role::continuous) return;
        ASSERT_EQ(q_table_get_size(q_node_get_table(nodes[node])), v.table.size());
        set_data(q_node_get_table(nodes[node]), v.table);
        ASSERT_EQ(q_node_touch_table(nodes[node]), q_error_none);
    }

    // In a compressed domain, keeps the zeros.
    void change_table() {
        const std::size_t node = random() % nodes.size();
        variable& v = reference[node];
        const std::vector<double> old = v.table;
        oracle::randomize_table(random, reference, node, with_zeros && !compressed);
        for (std::size_t i = 0; compressed && i < old.size(); ++i) v.table[i] *= old[i] > 0 ? 1 : 0;
        write_table(node);
    }

    // Adds or removes a link, and compiles anew.
    void change_structure() {
        const std::size_t node = random() % nodes.size(), other = random() % (node + 1);
        variable& v = reference[node];
        const bool continuous = reference[other].is == role::continuous;
        if (node == other || is_utility(other) || (continuous && v.is != role::continuous)) return;
        oracle::list& parents = continuous ? v.regressors : v.parents;
        if (const auto found = std::ranges::find(parents, other); found != parents.end()) {
            ASSERT_EQ(q_node_remove_parent(nodes[node], nodes[other]), q_error_none);
            parents.erase(found);
        } else {
            if (parents.size() == 3) return;
            ASSERT_EQ(q_node_add_parent(nodes[node], nodes[other]), q_error_none);
            parents.insert(parents.begin(), other);  // as in the table, which is there already
        }
        oracle::randomize_table(random, reference, node, with_zeros);
        write_table(node);
        compile();
    }

    void select(std::size_t node, std::size_t state) {
        ASSERT_EQ(q_node_select_state(nodes[node], state), q_error_none);
        reference[node].weights.assign(reference[node].states, 0.0);
        reference[node].weights[state] = 1;
    }

    void weigh(std::size_t node, std::size_t state, double weight) {
        std::vector<double>& weights = reference[node].weights;
        if (weights.empty()) weights.assign(reference[node].states, 1.0);
        weights[state] = weight;
        ASSERT_EQ(q_node_enter_finding(nodes[node], state, weight), q_error_none);
        if (std::ranges::count(weights, 1.0) == std::ptrdiff_t(weights.size())) weights.clear();
    }

    void retract(std::size_t node) {
        ASSERT_EQ(q_node_retract_findings(nodes[node]), q_error_none);
        reference[node].weights.clear();
        reference[node].value.reset();
    }

    // Mostly near what is possible given the other evidence.
    void observe_value(std::size_t node) {
        const auto given = oracle::enumerate(reference).moments_of[node];
        const double deviations = std::normal_distribution()(random) * (random() % 8 == 0 ? 6 : 1);
        const double value = given.mean + deviations * std::sqrt(std::max(given.variance, 0.0));
        enter_value(node, std::isfinite(value) ? value : 1);
    }
    void enter_value(std::size_t node, double value) {
        reference[node].value = value;
        ASSERT_EQ(q_node_enter_value(nodes[node], value), q_error_none);
    }

    void change_evidence() {
        const std::size_t node = random() % nodes.size(), choice = random() % 12;
        const variable& v = reference[node];
        const std::size_t state = random() % v.states;
        if (is_utility(node)) return;
        if (v.is == role::continuous || choice < (v.excluded ? 1 : 3)) retract(node);
        if (v.is == role::continuous && choice > 2) observe_value(node);
        if (v.is == role::continuous || choice < 3) return;
        if (choice > 3 && (v.is == role::decision || v.excluded || (choice < 6 && !positive)))
            return select(node, state);
        const std::size_t rare = random() % 10;
        const double logarithm = std::uniform_real_distribution(-6.0, 6.0)(random);
        weigh(node, state, rare < 2 && !positive ? 0 : rare < 4 ? 1 : std::pow(10, logarithm));
    }

    void start_again() {
        ASSERT_EQ(q_domain_retract_findings(domain), q_error_none);
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            reference[node].weights.clear();
            reference[node].value.reset();
            if (reference[node].excluded) select(node, random() % reference[node].states);
        }
    }

    void compress() {
        if (compressed || q_domain_evidence_mode_is(domain, q_mode_normal) > 1) return;  // or no equilibrium
        EXPECT_GT(q_domain_compress(domain), 0);
        compressed = true;
        for (q_junction_tree_t tree : trees()) EXPECT_TRUE(has_recovered(tree));
    }

    void change() {
        for (std::size_t changes = random() % 3; changes > 0; --changes) change_evidence();
        const std::size_t rare = random() % 60;
        if (rare < 5) start_again();
        if (rare % 6 == 0) change_table();
        if (rare % 10 == 1) change_structure();
        if (rare % 4 == 2 && of.compresses) compress();
    }

    request random_request() {
        request made;
        const bool all = of.roles == std::vector{role::chance};
        if (all && random() % 3 == 0) made.equilibrium = q_equilibrium_max;
        if (all && random() % 3 == 0) made.mode = q_mode_fast_retraction;
        if (random() % 2 == 0) return made;
        made.from_cliques = random() % 2 == 0;
        for (q_junction_tree_t tree : trees()) {
            const auto cliques = listed(q_junction_tree_get_cliques(tree));
            made.cliques.push_back(cliques[random() % cliques.size()]);
        }
        return made;
    }

    static bool evidence_is_below(q_node_t node) {
        return std::ranges::any_of(listed(q_node_get_children(node)), [](q_node_t child) {
            return q_node_get_category(child) == q_category_chance &&
                   (q_node_evidence_is_entered(child) == 1 || evidence_is_below(child));
        });
    }
    bool is_invalid() const {
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            const variable& v = reference[node];
            const int64_t index = is_discrete(node) ? q_node_get_selected_state(nodes[node]) : 0;
            const bool decides = v.is == role::decision && (v.states > 1 || index == -2);
            if (index < 0 && (v.excluded || (decides && (index == -2 || evidence_is_below(nodes[node])))))
                return true;
        }
        return false;
    }

    std::vector<q_status_t> acceptable(const request& asked, const answers& expected) const {
        const bool retracts = asked.mode == q_mode_fast_retraction;
        if (retracts && compressed) return {q_error_compressed};
        std::vector<q_status_t> codes;
        bool possible = expected.log_probability > -INFINITY && !expected.determined;
        bool fails = !possible || expected.noiseless;
        if (retracts) {
            const auto has_zero = [](const variable& v) { return std::ranges::count(v.weights, 0.0) > 0; };
            fails = std::ranges::any_of(reference, has_zero);
            possible = true;  // excluded nodes are never retracted
            for (std::size_t node = 0; node < nodes.size(); ++node)
                possible = possible && (reference[node].excluded || !std::isnan(expected.retracted[node][0]));
            possible = possible || !fails || trees().size() > 1;
            if (fails) codes = {q_error_fast_retraction, q_error_normalization};
        }
        if (is_invalid()) {
            if (asked.cliques.empty()) return {q_error_invalid_evidence};  // else another tree may fail first
            codes.push_back(q_error_invalid_evidence);
        } else if (possible) {
            codes.push_back(q_error_none);
        }
        if (fails) codes.push_back(q_error_inconsistency_or_underflow);
        if (expected.noiseless) codes.insert(codes.end(), {q_error_zero_variance, q_error_low_density});
        return codes;
    }

    // Asks for it and expects the right outcome and results.
    void propagate(const request& asked) {
        const answers expected = oracle::enumerate(reference, asked.equilibrium == q_equilibrium_max);
        const q_status_t status = asked.of(domain);
        EXPECT_THAT(acceptable(asked, expected), testing::Contains(status));
        record.push_back(status);
        expect_entered_evidence();
        if (status == q_error_none) {
            ++successes;
            expect_results(expected, asked);
            expect_predicates(asked);
            if (asked.mode == q_mode_fast_retraction && random() % 2 == 0) expect_retraction(expected, asked);
            return;
        }
        if (status != q_error_invalid_evidence && status != q_error_compressed) {
            // The tree that failed fails again, perhaps elsewhere.
            q_status_t again = q_error_none;
            for (q_junction_tree_t tree : trees()) {
                again = q_junction_tree_propagate(tree, asked.equilibrium, asked.mode);
                EXPECT_TRUE(again == q_error_none || has_recovered(tree));
                if (again != q_error_none) break;
            }
            EXPECT_THAT(acceptable(asked, expected), testing::Contains(again)) << status;
            EXPECT_NE(again, q_error_none);
        }
        if (random() % 2 == 0) start_again();
    }

    bool has_recorded_the_same(const model& other) const {
        return record.size() == other.record.size() &&
               std::memcmp(record.data(), other.record.data(), 8 * record.size()) == 0;
    }

    void run(int steps) {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            propagate(random_request());
            change();
        }
    }

    // Whether the tree is in equilibrium without evidence; then its results must be right.
    bool has_recovered(q_junction_tree_t tree) {
        oracle::network prior = reference;
        for (variable& v : prior) {
            if (!v.excluded) v.weights.clear();
            v.value.reset();
        }
        const answers expected = oracle::enumerate(prior);
        if (!std::isfinite(expected.log_probability)) return true;  // observed states of excluded nodes
        if (q_junction_tree_equilibrium_is(tree, q_equilibrium_sum) != 1) return false;
        for (std::size_t node = 0; node < nodes.size(); ++node)
            if (!is_utility(node) && !reference[node].excluded && tree_of(node) == tree &&
                q_node_evidence_is_propagated(nodes[node]) != 0)
                return false;
        std::swap(prior, reference);
        expect_results(expected, {}, tree);
        std::swap(prior, reference);
        return true;
    }

    void expect_entered_evidence() const {
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            const variable& v = reference[node];
            EXPECT_TRUE(!v.value || q_node_get_entered_value(nodes[node]) == *v.value);
            for (std::size_t state = 0; is_discrete(node) && state < v.states; ++state)
                EXPECT_EQ(q_node_get_entered_finding(nodes[node], state),
                          v.weights.empty() ? 1 : v.weights[state]);
        }
    }

    void expect_predicates(const request& asked) const {
        bool evidence = false, likelihood = false, value = false;
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            const variable& v = reference[node];
            value = value || v.value;
            evidence = evidence || v.value || (v.states > 1 && !v.weights.empty());
            likelihood = likelihood || (is_discrete(node) && q_node_likelihood_is_entered(nodes[node]) == 1);
        }
        EXPECT_EQ(q_domain_evidence_to_propagate(domain), 0u);
        EXPECT_EQ(q_domain_equilibrium_is(domain, asked.equilibrium), 1u);
        EXPECT_EQ(q_domain_evidence_mode_is(domain, asked.mode), 1u);
        EXPECT_TRUE(!evidence || q_domain_evidence_is_propagated(domain) == 1);
        EXPECT_EQ(q_domain_likelihood_is_propagated(domain), likelihood ? 1u : 0u);
        EXPECT_EQ(q_domain_cg_evidence_is_propagated(domain), value ? 1u : 0u);
    }

    // The belief of a node is the one that it has without its own evidence.
    void expect_retraction(const answers& expected, const request& asked) {
        const std::size_t node = random() % nodes.size();
        if (reference[node].excluded || std::isnan(expected.retracted[node][0])) return;
        std::vector<double> before;
        for (std::size_t state = 0; state < reference[node].states; ++state)
            before.push_back(q_node_get_belief(nodes[node], state));
        retract(node);
        propagate({asked.equilibrium});
        for (std::size_t state = 0; state < before.size(); ++state)
            expect_near(q_node_get_belief(nodes[node], state), before[state], exact, node);
    }

    void expect_near(double found, double expected, double slack, std::size_t node) {
        record.push_back(found);
        if (slack > 0) largest_difference = std::max(largest_difference, std::abs(found - expected) / slack);
        EXPECT_TRUE(std::isnan(expected) || std::abs(found - expected) <= slack)
            << "node " << node << ": " << found << ", not " << expected;
    }

    // Of the whole domain, or of one tree.
    void expect_results(const answers& expected, const request& asked, q_junction_tree_t only = nullptr) {
        const bool densities =
            std::ranges::any_of(reference, [](const variable& v) { return v.value.has_value(); });
        const double slack = densities ? 10 * exact : exact;  // squares in the exponent cost digits
        double utility = 0;
        scale = 0;
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            if (!is_utility(node)) continue;
            utility += expected.moments_of[node].mean;
            const auto [least, most] = std::ranges::minmax(reference[node].table);
            scale += std::max(std::abs(least), std::abs(most));
        }
        for (std::size_t node = 0; node < nodes.size(); ++node)
            if (only == nullptr || only == tree_of(node)) expect_node(expected, asked, node, slack);
        if (asked.mode == q_mode_normal && (only == nullptr || trees().size() == 1)) {
            const double logarithm = expected.log_probability;
            expect_near(q_domain_get_log_normalization_constant(domain), logarithm, 10 * slack, 0);
            if (std::abs(logarithm) < 600)
                expect_near(q_domain_get_normalization_constant(domain) / std::exp(logarithm), 1, slack, 0);
            if (asked.equilibrium == q_equilibrium_sum && only == nullptr)
                expect_near(q_domain_get_expected_utility(domain), utility, exact * scale, 0);
        }
    }

    void expect_node(const answers& expected, const request& asked, std::size_t node, double slack) {
        const variable& v = reference[node];
        const auto& [mean, variance, minimum, maximum] = expected.moments_of[node];
        q_node_t const found = nodes[node];
        if (v.is == role::continuous) {
            const double size = v.value ? 0 : 1e-9 * std::max(std::abs(minimum), std::abs(maximum));
            expect_near(q_node_get_mean(found), mean, size, node);
            expect_near(q_node_get_variance(found), variance, size * size * 1e9, node);
        } else if (v.is == role::utility) {
            expect_near(q_node_get_expected_utility(found, 0), mean, exact * scale, node);
            expect_near(q_node_get_utility_variance(found), variance, exact * scale * scale, node);
            expect_near(q_node_get_utility_minimum(found), minimum, 0, node);
            expect_near(q_node_get_utility_maximum(found), maximum, 0, node);
        } else {
            const bool retracts = asked.mode == q_mode_fast_retraction;
            const auto& beliefs = (retracts ? expected.retracted : expected.beliefs)[node];
            const bool observed = !v.weights.empty() && q_node_get_selected_state(found) >= 0;
            for (std::size_t state = 0; state < v.states; ++state)
                expect_near(q_node_get_belief(found, state), beliefs[state],
                            observed && !retracts ? 0 : slack, node);
            if (!retracts && asked.equilibrium == q_equilibrium_sum) expect_utilities(expected, node);
        }
    }

    // Of the states of a node: all utilities of its tree count.
    void expect_utilities(const answers& expected, std::size_t node) {
        std::vector<double> sums(reference[node].states, 0.0);
        for (std::size_t utility = 0; utility < nodes.size(); ++utility) {
            if (!is_utility(utility)) continue;
            const q_junction_tree_t tree = tree_of(utility);
            if (reference[node].excluded || (tree == nullptr && trees().size() > 1)) return;
            for (std::size_t state = 0; state < sums.size(); ++state)
                if (tree == nullptr || tree == tree_of(node))
                    sums[state] += expected.utilities[node][state][utility];
        }
        for (std::size_t state = 0; state < sums.size(); ++state)
            expect_near(q_node_get_expected_utility(nodes[node], state), sums[state], exact * scale, node);
    }
};
