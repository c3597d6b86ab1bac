// Small contracts within the core: memory, sizes, moments, evidence vectors.
#include <cstdint>
#include <new>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "allocation.h"
#include "findings.h"
#include "node.h"
#include "sizes.h"

using namespace quarn;

namespace {

TEST(core, sizes_saturate) {
    constexpr std::size_t half = largest_size / 2 + 1;
    EXPECT_EQ(saturating_product(half, 2), largest_size);
    EXPECT_EQ(saturating_product(largest_size, 0), 0u);
    EXPECT_EQ(saturating_sum(half, half), largest_size);
    EXPECT_EQ(saturating_sum(half, half - 2), largest_size - 1);
    EXPECT_STREQ(format_size(largest_size).data(), "HUGE");
    EXPECT_STREQ(format_size(largest_size - 1).data(), "18446744073709551614");
    EXPECT_THROW(number_array(largest_size / 8 + 1), std::bad_alloc);
    EXPECT_THROW(allocate(largest_size), std::bad_alloc);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(number_array(10).data()) % number_array::alignment, 0u);
}

TEST(core, a_continuous_node_leaves_a_table_with_its_row_and_column) {
    domain owner;
    std::vector<node*> nodes;
    for (int i = 0; i < 3; ++i) nodes.push_back(&create_node(owner, q_category_chance, q_kind_continuous));
    const std::vector<double> expected[] = {{3, 5, 6, 8, 9}, {1, 2, 6, 7, 9}, {1, 2, 3, 4, 5}};
    for (std::size_t removed = 0; removed < 3; ++removed) {
        const auto moments = new_table(table_type::zeros, nullptr, nodes);
        moments->materialise();
        std::iota(moments->moments.begin(), moments->moments.end(), 1.0);
        remove_node(*moments, *nodes[removed], 0);
        EXPECT_EQ(std::vector<double>(moments->moments.begin(), moments->moments.end()), expected[removed]);
    }
}

TEST(core, evidence_is_summed_up) {
    const struct {
        std::vector<double> weights;
        int64_t index;
        bool likelihood;
    } cases[] = {{{1, 1, 1}, -1, false}, {{0, 1, 0}, 1, false},   {{1, 0, 1}, -2, false},
                 {{0, 0, 0}, -2, false}, {{0, 0.5, 0}, -2, true}, {{1, 1, 0.5}, -2, true},
                 {{1}, -1, false},       {{0}, -2, false}};
    for (const auto& [weights, index, likelihood] : cases) {
        EXPECT_EQ(classify_weights(weights), index);
        findings entered;
        for (std::size_t state = weights.size(); state-- > 0;)
            entered.enter(state, weights[state], weights.size());
        EXPECT_EQ(entered.index, index);
        EXPECT_EQ(entered.is_likelihood(), likelihood);
        for (std::size_t state = 0; state < weights.size(); ++state)
            EXPECT_EQ(entered.weight(state), weights[state]);
    }
    const findings nothing, first{0, {}}, second{1, {}}, half{-2, {1, 0.5}}, quarter{-2, {1, 0.25}};
    const auto differ = [](const findings& a, const findings& b, std::size_t states) {
        return findings_differ(a.view(), b.view(), states);
    };
    EXPECT_TRUE(!differ(first, first, 2) && !differ(half, half, 2));
    EXPECT_TRUE(differ(first, second, 2) && differ(first, nothing, 2) && differ(half, quarter, 2));
    EXPECT_TRUE(!differ(nothing, first, 1) && differ(first, {-2, {0.0}}, 1));
}

}  // namespace
