// Operations on tables with continuous nodes, by hand.
#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "cg_combination.h"
#include "cg_conditioning.h"
#include "cg_evidence.h"
#include "cg_marginals.h"
#include "errors.h"

using namespace quarn;

namespace {

using list = std::vector<std::size_t>;
using numbers = std::vector<double>;
using table_pointer = std::unique_ptr<table>;
constexpr auto head = cg_role::head, tail = cg_role::tail, unknown = cg_role::unknown;
constexpr auto no_error = q_error_none;

bool same_bits(const table& a, const table& b) {
    const auto bits = [](double number) { return std::bit_cast<uint64_t>(number); };
    return std::ranges::equal(a.data, b.data, {}, bits, bits) &&
           std::ranges::equal(a.moments, b.moments, {}, bits, bits) && a.roles == b.roles;
}

// An operation must do nothing where it fails.
void run(table& changed, q_error_t expected, const std::function<void(table&, const workers&)>& operation) {
    const table_pointer before = copy_table(changed);
    try {
        operation(changed, {});
        EXPECT_EQ(q_error_none, expected);
    } catch (const failure& thrown) {
        EXPECT_EQ(thrown.code(), expected);
        EXPECT_TRUE(same_bits(changed, *before));
    }
}
void combine(table& target, const table& source, q_error_t expected = no_error) {
    run(target, expected, [&](table& t, auto w) { cg_combine(make_cg_plan(t, source), t, source, w); });
}
double observe_head(table& changed, std::size_t position, double value, q_error_t expected = no_error) {
    std::ranges::transform(changed.data, changed.data.begin(), [](double w) { return std::log(w); });
    run(changed, expected, [&](table& t, auto w) { insert_head_evidence(t, position, value, w); });
    const double largest = *std::ranges::max_element(changed.data);
    std::ranges::transform(changed.data, changed.data.begin(),
                           [&](double l) { return std::exp(l - largest); });
    return largest;
}

// A node of two states and three continuous ones.
struct node_set {
    node_set() {
        discrete->state_count = 2;
        for (node*& made : continuous) made = &create_node(owner, q_category_chance, q_kind_continuous);
    }
    table_pointer over(bool is_conditional, const list& some_continuous, std::vector<cg_role> roles,
                       const numbers& data = {}, const numbers& moments = {}) const {
        std::vector<node*> nodes;
        if (is_conditional) nodes.push_back(discrete);
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
    node *discrete = &create_node(owner, q_category_chance, q_kind_discrete), *continuous[3];
};

numbers copied(const number_array& from) { return {from.begin(), from.end()}; }

TEST(cg_potentials, circles_are_refused) {
    const node_set d;
    const table_pointer x = d.over(false, {0}, {head}, {}, {1, 4});
    const table_pointer y_given_x = d.over(false, {1, 0}, {head, tail}, {}, {2, 9, 0, 3, 0});
    const table_pointer both = d.over(false, {0, 1}, {unknown});
    combine(*both, *x);
    combine(*both, *y_given_x);
    combine(*both, *x, q_error_usage);
    run(*both, no_error, [](table& t, auto w) { condition_on(t, list{1}, w); });
    EXPECT_EQ(copied(both->moments), numbers({1 - 12.0 / 45 * 5, 4 - 12.0 / 45 * 12, 0, 12.0 / 45, 0}));
    combine(*both, *y_given_x, q_error_usage);
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
    const node_set d;
    for (const auto& [weights, moments, weight, mixed] : cases)
        for (const cg_role of_y : {head, unknown}) {
            SCOPED_TRACE(testing::PrintToString(moments));
            const table_pointer source = d.over(true, {0, 1}, {head}, weights, moments);
            const table_pointer target = d.over(false, {0, 1}, {head, of_y}, {9}, numbers(5, 77));
            run(*target, no_error,
                [&](table& t, auto w) { weak_marginal(make_cg_plan(*source, t), *source, t, w); });
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
    const node_set d;
    for (const auto& [weights, moments, value, error, result] : cases) {
        SCOPED_TRACE(testing::PrintToString(moments));
        const table_pointer changed = d.over(true, {0}, {head}, weights, moments);
        const double logarithm = observe_head(*changed, 0, value, error);
        if (error != no_error) continue;
        EXPECT_NEAR(changed->data[0], result[0], 1e-3);
        EXPECT_NEAR(changed->data[1], result[1], 1e-3);
        EXPECT_DOUBLE_EQ(logarithm, result[2]);
    }
}

}  // namespace
