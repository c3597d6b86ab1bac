// Operations by lists of positions against the same operations by loop plans, where the entries that the lists leave out
// are 0.
#include "table_map.h"

#include <algorithm>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "node.h"
#include "table_operations.h"

using namespace quarn;

namespace {

using numbers = std::vector<double>;

TEST(table_map, lists_agree_with_loops) {
    unsigned widths = 0;  // bytes of a position
    for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        domain owner;
        std::vector<node*> nodes;
        for (std::size_t n = seed % 5; n-- > 0;) {
            node& made = create_node(owner, q_category_chance, q_kind_discrete);
            nodes.emplace_back(&made)->state_count = seed == 2 ? 270 : 1 + random() % 9;
        }
        auto smaller_nodes = nodes;
        std::ranges::shuffle(smaller_nodes, random);
        if (seed > 2) smaller_nodes.resize(random() % (nodes.size() + 1));
        const loop_plan plan = make_loop_plan(nodes, smaller_nodes);

        const auto any = [&] { return static_cast<double>(random() % 11) / 8; };
        numbers smaller(plan.smaller_size), larger(plan.larger_size), position(larger), kept,
            old(smaller.size(), 77);
        std::iota(smaller.begin(), smaller.end(), 0.0);
        expand(plan, position.data(), smaller.data());
        std::ranges::generate(smaller, any);
        std::vector<std::size_t> entries;
        for (std::size_t i = 0; i < larger.size(); ++i) {
            if (random() % 3 > 0) continue;
            entries.push_back(i);
            kept.push_back(larger[i] = any());
        }
        const table_map list = table_map::listed(entries.size(), smaller.size(), [&](const auto& take) {
            for (std::size_t i = 0; i < larger.size(); ++i)
                take(static_cast<std::size_t>(position[i]), std::ranges::binary_search(entries, i));
        });
        EXPECT_EQ(list.loops(), nullptr);
        if (!kept.empty()) widths |= 1u << list.list_bytes() / kept.size();

        for (const bool by_sum : {true, false}) {
            const auto reduce = [&](const table_map& map, const numbers& from) {
                numbers result(old);
                (by_sum ? sum_marginal(map, from.data(), result.data())
                        : max_marginal(map, from.data(), result.data()));
                return result;
            };
            EXPECT_EQ(reduce(plan, larger), reduce(list, kept)) << by_sum;
        }
        multiply(table_map(plan), larger.data(), smaller.data());
        multiply(list, kept.data(), smaller.data());
        for (std::size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(larger[entries[i]], kept[i]);
    }
    EXPECT_EQ(widths, 0b10110u);
}

TEST(table_map, lists_have_room_for_32_bits) {
    const auto nothing = [](const auto&) {};
    EXPECT_EQ(table_map::listed(0, 0xffffffff, nothing).smaller_size(), 0xffffffff);
    EXPECT_THROW(table_map::listed(0, 0x100000000, nothing), failure);
}

}  // namespace
