// Small contracts within the core: memory, sizes, lists, locale, evidence vectors.
#include <clocale>
#include <cstdint>
#include <cstring>
#include <new>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "allocation.h"
#include "allocation_faults.h"
#include "c_locale.h"
#include "errors.h"
#include "findings.h"
#include "handle_list.h"
#include "node.h"
#include "sizes.h"

using namespace quarn;

namespace {

TEST(core, sizes_saturate) {
    constexpr std::size_t half = largest_size / 2 + 1;
    EXPECT_EQ(saturating_product(half, 2), largest_size);
    EXPECT_EQ(saturating_product(half, 1), half);
    EXPECT_EQ(saturating_product(largest_size, largest_size), largest_size);
    EXPECT_EQ(saturating_product(largest_size, 0), 0u);
    EXPECT_EQ(saturating_sum(half, half), largest_size);
    EXPECT_EQ(saturating_sum(half, half - 2), largest_size - 1);
    for (const auto& [size, text] : {std::pair{largest_size, "HUGE"},
                                     {largest_size - 1, "18446744073709551614"},
                                     {std::size_t(0), "0"},
                                     {std::size_t(1000), "1000"},
                                     {std::size_t(1234567), "1234567"}})
        EXPECT_STREQ(format_size(size).data(), text);
}

TEST(core, blocks_of_memory) {
    void* block = allocate(4);
    std::memcpy(block, "abc", 4);
    block = reallocate(block, 4, 100);
    EXPECT_STREQ(static_cast<char*>(block), "abc");
    EXPECT_THROW(reallocate(block, 100, largest_size), std::bad_alloc);
    EXPECT_STREQ(static_cast<char*>(block), "abc");
    if (allocation_faults::are_possible()) {
        allocation_faults plan(0, true);
        bool refused = false;
        try {
            release(reallocate(block, 100, 200));
        } catch (const std::bad_alloc&) {
            refused = true;
        }
        void* const same = shrink(block, 4);
        plan.stop();
        EXPECT_TRUE(refused && same == block);
    }
    block = shrink(block, 4);
    EXPECT_STREQ(static_cast<char*>(block), "abc");
    EXPECT_EQ(shrink(block, 0), nullptr);
    EXPECT_EQ(shrink(nullptr, 5), nullptr);

    if (allocation_faults::are_possible()) {
        allocation_faults plan(1000, false);  // the largest size is refused without asking
        EXPECT_THROW(allocate(largest_size), std::bad_alloc);
        EXPECT_EQ(plan.leaked(), 0u);
    }
    EXPECT_THROW(number_array(largest_size / 8 + 1), std::bad_alloc);
    EXPECT_EQ(duplicate_string(nullptr), nullptr);
    EXPECT_STREQ(duplicate_string("").get(), "");
    const text copy = duplicate_string("text");
    EXPECT_STREQ(copy.get(), "text");
}

TEST(core, arrays_of_numbers_keep_what_they_hold) {
    number_array numbers(10);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(numbers.data()) % number_array::alignment, 0u);
    for (std::size_t i = 0; i < 10; ++i) numbers[i] = double(i);
    const number_array copy = numbers.copy();
    if (allocation_faults::are_possible()) {
        allocation_faults plan(0, true);
        numbers.shrink(8);
        plan.stop();
        EXPECT_EQ(numbers.size(), 8u);
    }
    numbers.shrink(3);
    EXPECT_EQ(std::vector<double>(numbers.begin(), numbers.end()), (std::vector<double>{0, 1, 2}));
    numbers.shrink(7);
    EXPECT_EQ(numbers.size(), 3u);
    EXPECT_EQ(copy.size(), 10u);
    EXPECT_EQ(copy[9], 9);
}

TEST(core, lists_of_handles_end_with_a_null) {
    int items[4] = {};
    handle_list<int> list;
    EXPECT_EQ(*list.array(), nullptr);
    const auto expect = [&](const std::vector<int>& expected) {
        ASSERT_EQ(list.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(list.array()[i], &items[expected[i]]);
        EXPECT_EQ(list.array()[expected.size()], nullptr);
    };
    list.append(&items[0]);
    list.insert(0, &items[1]);
    list.insert(1, &items[2]);
    list.insert(3, &items[3]);
    expect({1, 2, 0, 3});
    EXPECT_EQ(list.index_of(&items[0]), 2u);
    list.erase(1);
    list.remove(&items[2]);
    list.remove(&items[3]);
    expect({1, 0});
    EXPECT_FALSE(list.contains(&items[3]));
    list.replace(1, &items[2]);
    expect({1, 2});
    if (allocation_faults::are_possible()) {
        list.reserve(10);
        allocation_faults plan(0, true);
        for (int i = 0; i < 8; ++i) list.insert(0, &items[0]);
        EXPECT_FALSE(plan.stop());
    }
    list.clear();
    expect({});
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

TEST(core, the_host_gets_its_locale_back) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const char* const other = std::setlocale(LC_ALL, "C.UTF-8");
    if (other == nullptr) GTEST_SKIP() << "no locale but \"C\" is installed";
    const std::string host = other;
    {
        const c_locale_scope scope;
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
        const c_locale_scope inner;
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    }
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), host);
    if (allocation_faults::are_possible()) {
        q_error_t code = q_error_none;
        allocation_faults plan(0, true);
        try {
            const c_locale_scope scope;
        } catch (...) {
            code = code_of_current_exception();
        }
        plan.stop();
        EXPECT_EQ(code, q_error_no_memory);
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), host);
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(core, evidence_is_summed_up) {
    const struct {
        std::vector<double> weights;
        int64_t index;
        bool likelihood;
    } cases[] = {
        {{1, 1, 1}, findings::none, false},
        {{0, 1, 0}, 1, false},
        {{0, 0, 1}, 2, false},
        {{1, 0, 1}, findings::general, false},
        {{0, 0, 0}, findings::general, false},
        {{0, 0.5, 0}, findings::general, true},
        {{1, 1, 0.5}, findings::general, true},
        {{2, 0, 0}, findings::general, true},
        {{1}, findings::none, false},
        {{0}, findings::general, false},
    };
    for (const auto& tested : cases) {
        SCOPED_TRACE(&tested - cases);
        EXPECT_EQ(classify_weights(tested.weights), tested.index);
        findings entered;
        for (std::size_t state = tested.weights.size(); state-- > 0;)
            entered.enter(state, tested.weights[state], tested.weights.size());
        EXPECT_EQ(entered.index, tested.index);
        EXPECT_EQ(entered.is_likelihood(), tested.likelihood);
        for (std::size_t state = 0; state < tested.weights.size(); ++state)
            EXPECT_EQ(entered.weight(state), tested.weights[state]);
    }
    const auto differ = [](std::vector<double> a, std::vector<double> b) {
        const findings first{classify_weights(a), a};
        const findings second{classify_weights(b), b};
        return findings_differ(first, second, a.size());
    };
    EXPECT_FALSE(differ({1, 0}, {1, 0}));
    EXPECT_TRUE(differ({1, 0}, {0, 1}));
    EXPECT_TRUE(differ({1, 0}, {1, 1}));
    EXPECT_FALSE(differ({1, 0.5}, {1, 0.5}));
    EXPECT_TRUE(differ({1, 0.5}, {1, 0.25}));
    EXPECT_FALSE(findings_differ({findings::none, {}}, {0, {}}, 1));
    EXPECT_TRUE(findings_differ({findings::none, {}}, {0, {}}, 2));
    EXPECT_TRUE(findings_differ({0, {}}, {findings::general, {0.0}}, 1));
}

}  // namespace
