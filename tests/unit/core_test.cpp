// Small contracts within the core: memory and sizes.
#include <cstdint>
#include <new>

#include <gtest/gtest.h>

#include "allocation.h"
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

}  // namespace
