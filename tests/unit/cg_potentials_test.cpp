// Operations on tables with continuous nodes, against dense distributions and by hand.
#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <numeric>

#include <gtest/gtest.h>

#include "cg_combination.h"
#include "cg_conditioning.h"
#include "cg_evidence.h"
#include "cg_marginals.h"
#include "errors.h"
#include "gaussian.h"

using namespace quarn;

namespace {

using oracle::list;
using numbers = std::vector<double>;
using table_pointer = std::unique_ptr<table>;
constexpr auto head = cg_role::head, tail = cg_role::tail, unknown = cg_role::unknown;
constexpr auto no_error = q_error_none;

bool same_bits(const table& a, const table& b) {
    const auto bits = [](double number) { return std::bit_cast<uint64_t>(number); };
    return std::ranges::equal(a.data, b.data, {}, bits, bits) &&
           std::ranges::equal(a.moments, b.moments, {}, bits, bits) && a.roles == b.roles;
}

// An operation must do the same on any number of threads, and nothing where it fails.
void run(table& changed, q_error_t expected, const std::function<void(table&, const workers&)>& operation) {
    static unsigned calls = 0;
    table_pointer result;
    for (const std::size_t level : calls++ % 16 == 0 ? list{1, 2, 4} : list{1}) {
        table_pointer copy = copy_table(changed);
        try {
            operation(*copy, {level, 1});
            EXPECT_EQ(q_error_none, expected);
        } catch (const failure& thrown) {
            EXPECT_EQ(thrown.code(), expected);
            EXPECT_TRUE(same_bits(*copy, changed));
        }
        if (!result) result = copy_table(*copy);
        EXPECT_TRUE(same_bits(*copy, *result));
    }
    changed = std::move(*result);
}
void combine(table& target, const table& source, q_error_t expected = no_error) {
    run(target, expected, [&](table& t, auto w) { cg_combine(make_cg_plan(t, source), t, source, w); });
}
void marginal(decltype(strong_marginal)& kind, const table& source, table& target) {
    run(target, no_error, [&](table& t, auto w) { kind(make_cg_plan(source, t), source, t, w); });
}
void condition(table& changed, const list& positions) {
    run(changed, no_error, [&](table& t, auto w) { condition_on(t, positions, w); });
}
double observe_head(table& changed, std::size_t position, double value, q_error_t expected = no_error) {
    std::ranges::transform(changed.data, changed.data.begin(), [](double w) { return std::log(w); });
    run(changed, expected, [&](table& t, auto w) { insert_head_evidence(t, position, value, w); });
    const double largest = *std::ranges::max_element(changed.data);
    std::ranges::transform(changed.data, changed.data.begin(),
                           [&](double l) { return std::exp(l - largest); });
    return largest;
}

struct node_set {
    node_set(const list& state_counts, std::size_t continuous_count) {
        for (const std::size_t count : state_counts) add(discrete, q_kind_discrete)->state_count = count;
        while (continuous.size() < continuous_count) add(continuous, q_kind_continuous);
    }
    node* add(std::vector<node*>& among, q_kind_t kind) {
        node* const added = among.emplace_back(&create_node(owner, q_category_chance, kind));
        added->x = int32_t(among.size() - 1);
        return added;
    }
    table_pointer over(const list& some_discrete, const list& some_continuous, std::vector<cg_role> roles,
                       const numbers& data = {}, const numbers& moments = {}) const {
        std::vector<node*> nodes;
        for (const std::size_t v : some_discrete) nodes.push_back(discrete[v]);
        for (const std::size_t v : some_continuous) nodes.push_back(continuous[v]);
        table_pointer made = new_table(table_type::ones, nullptr, nodes);
        made->materialise();
        roles.resize(some_continuous.size(), roles.back());
        made->roles = roles;
        std::ranges::copy(data, made->data.begin());
        std::ranges::copy(moments, made->moments.begin());
        return made;
    }
    domain owner;
    std::vector<node*> discrete, continuous;
};

list random_order(std::mt19937& random, std::size_t count) {
    list order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::shuffle(order, random);
    return order;
}

list state_counts(unsigned seed) {
    const list counts{1 + seed % 3, 1 + seed / 2 % 3, 1 + seed / 4 % 3};
    return {counts.begin(), counts.begin() + seed % 4};
}

// A random network in both representations.
struct model : node_set {
    explicit model(unsigned seed) : node_set(state_counts(seed), 1 + seed / 4 % 7), random(seed) {
        std::vector<oracle::mixed_table> drawn{oracle::random_table(random, state_counts(seed), 0, 0)};
        drawn[0].continuous.clear();
        for (std::size_t v = 0; v < continuous.size(); ++v)
            drawn.push_back(oracle::random_table(random, state_counts(seed), v, 1 + seed % 3));
        for (const auto& [conditions, family, weights, equations] : drawn) {
            table& made = *tables.emplace_back(over(conditions, family, {head, tail}, weights));
            for (std::size_t row = 0; row < made.size && !family.empty(); ++row) {
                double* const block = made.moments.data() + row * made.block_size();
                for (std::size_t k = 0; k < family.size(); ++k) block[cg_coefficient(k)] = equations[row][k];
                block[cg_intercept] = equations[row].back();
            }
        }
        all = oracle::joint(state_counts(seed), continuous.size(), drawn);
        joint = product(random_order(random, tables.size()));
    }
    table_pointer product(const list& of) {
        const list some = random_order(random, discrete.size());
        table_pointer made = over(some, random_order(random, continuous.size()), {unknown});
        for (const std::size_t t : of) combine(*made, *tables[t]);
        return made;
    }

    // In possible configurations all is as it should be; of nodes that were observed nothing is held.
    void expect(const table& found, const oracle::mixture& of, std::size_t observed = 0) const {
        list shown[2];
        for (const node* n : found.nodes) shown[n->is_continuous()].push_back(std::size_t(n->x));
        EXPECT_EQ(std::size_t(std::ranges::count(found.roles, head)), found.roles.size() - observed);
        const oracle::mixture parts = oracle::marginal(of, shown[0], shown[1]);
        for (std::size_t c = 0; c < found.size; ++c) {
            const auto& [states, log_weight, mean, covariance] = parts[c];
            EXPECT_NEAR(found.data[c], std::exp(log_weight), 1e-10);
            const double* entry = found.moments.data() + c * found.block_size();
            double scale = 1;
            for (std::size_t i = 0; i < mean.size(); ++i)
                scale = std::max({scale, std::abs(mean[i]), covariance[i][i]});
            for (std::size_t i = 0; found.data[c] > 0 && i < mean.size(); ++i) {
                EXPECT_NEAR(*entry++, found.roles[i] == head ? mean[i] : 0, 1e-10 * scale);
                for (std::size_t j = 0; j <= i; ++j) EXPECT_NEAR(*entry++, covariance[i][j], 1e-10 * scale);
            }
        }
    }

    std::mt19937 random;
    oracle::mixture all;
    std::vector<table_pointer> tables;  // of all nodes, parents first
    table_pointer joint;
};

void with_random_models(const std::function<void(model&)>& test) {
    for (unsigned seed = 0; seed < 1500 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        model m(seed);
        test(m);
    }
}

TEST(cg_potentials, node_tables_in_any_order_and_grouping_make_the_joint_distribution) {
    with_random_models([](model& m) {
        m.expect(*m.joint, m.all);
        const list order = random_order(m.random, m.tables.size());
        const auto middle = order.begin() + std::ptrdiff_t(m.random() % (order.size() + 1));
        const table_pointer one = m.product({order.begin(), middle});
        combine(*one, *m.product({middle, order.end()}));
        m.expect(*one, m.all);
    });
}

TEST(cg_potentials, marginals_and_conditionals_make_up_the_joint_distribution) {
    with_random_models([](model& m) {
        list given = random_order(m.random, m.continuous.size()),
             kept = random_order(m.random, m.discrete.size());
        given.resize(m.random() % (given.size() + 1));
        const table_pointer strong = m.over(kept, given, {head});
        marginal(strong_marginal, *m.joint, *strong);
        m.expect(*strong, m.all);
        kept.resize(m.random() % (kept.size() + 1));
        const table_pointer weak = m.over(kept, given, {head});
        marginal(weak_marginal, *m.joint, *weak);
        m.expect(*weak, m.all);
        for (std::size_t& v : given) v = m.joint->continuous_position(m.continuous[v]);
        condition(*m.joint, given);
        std::ranges::fill(strong->data, 1);
        combine(*m.joint, *strong);
        m.expect(*m.joint, m.all);
    });
}

TEST(cg_potentials, evidence_conditions_and_weighs_the_joint_distribution) {
    with_random_models([](model& m) {
        const oracle::mixture before = m.all;
        double logs = 0;
        std::size_t count = 0;
        for (const std::size_t v : random_order(m.random, m.continuous.size())) {
            bool is_explained = false;  // what is left of a variance is rounding
            for (std::size_t c = 0; c < before.size(); ++c)
                is_explained |= m.all[c].covariance[v][v] < 1e-6 * before[c].covariance[v][v];
            if (is_explained) continue;
            const oracle::gaussian& part = m.all[m.random() % m.all.size()];
            const double variance = part.covariance[v][v], deviation = variance > 0 ? std::sqrt(variance) : 1;
            const double value = part.mean[v] + deviation * std::normal_distribution()(m.random);
            oracle::mixture next = m.all;
            oracle::observe(next, v, value);
            double largest = -INFINITY, sum = 0, found = 0;
            for (const auto& p : next) largest = std::max(largest, p.log_weight);
            const q_error_t expected = largest > -INFINITY ? no_error : q_error_low_density;
            const std::size_t place = m.joint->continuous_position(m.continuous[v]);
            logs += observe_head(*m.joint, place, value, expected);
            if (expected != no_error) continue;
            ++count;
            m.all = next;
            for (auto& p : next) sum += std::exp(p.log_weight -= largest);
            for (const double weight : m.joint->data) found += weight;
            m.expect(*m.joint, next, count);
            const double result = logs + std::log(found) - double(count) * 0.9189385332046728;
            EXPECT_NEAR(result, largest + std::log(sum), 1e-10 * std::max(1.0, std::abs(largest)));
        }
    });
}

numbers copied(const number_array& from) { return {from.begin(), from.end()}; }

TEST(cg_potentials, arcs_are_reversed_and_circles_refused) {
    const node_set d({2}, 3);
    const table_pointer x = d.over({}, {0}, {head}, {}, {1, 4});
    const table_pointer y_given_x = d.over({}, {1, 0}, {head, tail}, {}, {2, 9, 0, 3, 0});
    const table_pointer both = d.over({}, {0, 1}, {unknown}), y = d.over({}, {1}, {head});
    combine(*both, *x);
    combine(*both, *y_given_x);
    combine(*both, *x, q_error_usage);
    marginal(strong_marginal, *both, *y);
    EXPECT_EQ(copied(y->moments), numbers({5, 45}));
    condition(*both, {1});
    EXPECT_EQ(copied(both->moments), numbers({1 - 12.0 / 45 * 5, 4 - 12.0 / 45 * 12, 0, 12.0 / 45, 0}));
    combine(*both, *y_given_x, q_error_usage);
    run(*both, no_error, [](table& t, auto w) { insert_tail_evidence(t, 1, 20, w); });
    EXPECT_EQ(copied(both->moments),
              numbers({1 - 12.0 / 45 * 5 + 12.0 / 45 * 20, 4 - 12.0 / 45 * 12, 0, 0, 0}));
    // x, y = x / 10 and z = 3 x + noise, given x and y: one of them says all, the other nothing.
    const table_pointer linear = d.over({}, {0, 1, 2}, {head}, {}, {0, 1, 0, 0.1, 0.01, 0, 3, 0.3, 10});
    condition(*linear, {0, 1});
    EXPECT_DOUBLE_EQ(linear->moments[cg_covariance(2, 0)] + linear->moments[cg_covariance(2, 1)] / 10, 3);
    EXPECT_EQ(linear->moments[cg_covariance(2, 0)] * linear->moments[cg_covariance(2, 1)], 0);
}

TEST(cg_potentials, a_strong_marginal_changes_nothing_but_heads) {
    const node_set d({2}, 3);
    const table_pointer source = d.over({}, {0, 1, 2}, {head, head, tail}, {3}, {1, 2, 3, 4, 5, 0, 6, 7, 0});
    const table_pointer target = d.over({}, {2, 0, 1}, {tail, unknown, head}, {}, numbers(9, 77));
    marginal(strong_marginal, *source, *target);
    EXPECT_EQ(copied(target->moments), numbers({77, 77, 77, 77, 77, 3, 7, 77, 5}));
    EXPECT_EQ(target->data[0], 3);
}

TEST(cg_potentials, mixtures_by_hand) {
    const double nan = NAN, step = std::ldexp(1, -42), half = step / 2;
    const struct {
        numbers weights, moments;  // mean of x, variance, mean of y, covariance, variance
        double weight;
        numbers mixed;
    } cases[] = {{{0.25, 0.75}, {0, 1, 1, 0.5, 2, 4, 1, 1, 0.5, 4}, 1, {3, 4, 1, 0.5, 3.5}},
                 {{0, 2}, {nan, nan, INFINITY, nan, nan, 4, 1, 1, 0.5, 4}, 2, {4, 1, 1, 0.5, 4}},
                 {{2, nan}, {4, 1, 1, 0.5, 4, 0, 1, 1, 1, 4}, 2, {4, 1, 1, 0.5, 4}},
                 {{0, -1}, {4, 1, 1, 0.5, 4, 0, 1, 1, 1, 4}, 0, {0, 0, 0, 0, 0}},
                 // Means that are as good as equal, and others; covariances of what does not vary.
                 {{1, 1}, {1, 0, 1, 5, 0, 1 + half, 0, 1, 5, 0}, 2, {1 + half / 2, 0, 1, 0, 0}},
                 {{1, 1}, {1, 0, 1, 5, 0, 1 + step, 0, 1, 5, 0}, 2, {1 + half, half * half, 1, 0, 0}}};
    const node_set d({2}, 3);
    for (const auto& [weights, moments, weight, mixed] : cases)
        for (const cg_role of_y : {head, unknown}) {
            SCOPED_TRACE(testing::PrintToString(moments));
            const table_pointer source = d.over({0}, {0, 1}, {head}, weights, moments);
            const table_pointer target = d.over({}, {0, 1}, {head, of_y}, {9}, numbers(5, 77));
            marginal(weak_marginal, *source, *target);
            numbers expected = mixed;
            if (of_y == unknown) std::fill(expected.begin() + 2, expected.end(), 77);
            EXPECT_EQ(copied(target->moments), expected);
            EXPECT_EQ(target->data[0], weight);
        }
}

TEST(cg_potentials, evidence_by_hand) {
    const struct {
        numbers weights, moments;  // mean and variance
        double value;
        q_error_t error;
        numbers result;  // weights, then the logarithm
    } cases[] = {
        {{0.5, 0.5}, {0, 0, 1, 0}, 1, q_error_zero_variance, {}},
        {{0.5, 0}, {1, 4, 1, 0}, 1, no_error, {1, 0, std::log(0.25)}},
        {{0.5, 0.5}, {3, 0, 1, 4}, 1, no_error, {0, 1, std::log(0.25)}},
        {{0.5, NAN}, {1, 4, 1, 0}, 1, no_error, {1, 0, std::log(0.25)}},
        {{0.5, 0.5}, {3, 0, 2, 0}, 1, q_error_low_density, {}},
        {{0.5, 0.5}, {3, 1, 2, 1}, INFINITY, q_error_low_density, {}},
        {{0.5, 0.5}, {3, 1, 2, 1}, NAN, q_error_low_density, {}},
        {{0, 0}, {3, 1, 2, 1}, 1, q_error_inconsistency_or_underflow, {}},
        {{1, 1}, {1, 1, 0, 1}, 1 << 20, no_error, {1, 0, -549754765312.5}},
        {{1, 1}, {std::ldexp(1, -20), 1, 0, 1}, 1 << 20, no_error, {1, std::exp(-1), 1 - std::ldexp(1, 39)}}};
    const node_set d({2}, 3);
    for (const auto& [weights, moments, value, error, result] : cases) {
        SCOPED_TRACE(testing::PrintToString(moments));
        const table_pointer changed = d.over({0}, {0}, {head}, weights, moments);
        const double logarithm = observe_head(*changed, 0, value, error);
        if (error != no_error) continue;
        EXPECT_NEAR(changed->data[0], result[0], 1e-3);
        EXPECT_NEAR(changed->data[1], result[1], 1e-3);
        EXPECT_DOUBLE_EQ(logarithm, result[2]);
    }
}

TEST(cg_potentials, a_node_is_unnecessary_when_nothing_varies_with_it) {
    const struct {
        cg_role of_y;
        numbers moments;
        bool is_unnecessary;
    } cases[] = {
        {head, {3, 0, 1, 0, 2, 4, 0, 1, 0, 2}, true},    {head, {0, 0, 0, 0, 0, 0, 1, 0, 0, 0}, false},
        {head, {0, 0, 0, 0, 0, 0, 0, 0, 1, 0}, false},   {tail, {0, 0, 0, 5, 0, 0, 0, 0, 5, 0}, true},
        {head, {0, 0, 0, NAN, 0, 0, 0, 0, 0, 0}, false}, {tail, {0, NAN, 0, 5, 0, 0, 0, 0, 5, 0}, false},
        {unknown, {0, 0, 0, 0, 0, 0, 0, 0, 5, 0}, false}};
    const node_set d({2}, 3);
    for (const auto& [of_y, moments, expected] : cases)
        EXPECT_EQ(is_unnecessary(*d.over({0}, {0, 1}, {head, of_y}, {}, moments), 0), expected);
}

}  // namespace
