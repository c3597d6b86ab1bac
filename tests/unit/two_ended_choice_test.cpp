// Choices in nested loops, against the same among a list of the positions that the loops reach.
#include "two_ended_choice.h"

#include <random>

#include <gtest/gtest.h>

#include "errors.h"

namespace {

using namespace quarn;

TEST(two_ended_choice, goes_through_loops_of_any_depth_from_either_end) {
    std::mt19937 random(1);
    for (int choice = 0; choice < 5000; ++choice) {
        loop_levels levels;
        std::vector<uint32_t> positions{0};
        std::size_t size = 1;
        for (std::size_t depth = random() % 6; depth > 0; --depth) {
            const loop_level level{2 + random() % 3, size * (1 + random() % 2), 0};
            size = level.count * level.larger;
            levels.insert(levels.begin(), level);
            const std::size_t before = positions.size();
            for (std::size_t i = before; i < level.count * before; ++i)
                positions.push_back(uint32_t(positions[i - before] + level.larger));
        }
        std::vector<double> weights(size);
        for (double& weight : weights) weight = double(random() % 3);
        weights[0] = 1;
        double total = 0;
        for (const uint32_t position : positions) total += weights[position];

        random_generator in_loops{uint32_t(random())}, in_list = in_loops;
        EXPECT_EQ(choose_in_loops(weights.data(), levels, total, in_loops),
                  choose_listed(weights.data(), positions, total, in_list));
        EXPECT_EQ(in_loops.uniform(), in_list.uniform());
    }
}

TEST(two_ended_choice, fails_where_weights_do_not_make_up_their_total) {
    random_generator generator;
    EXPECT_THROW(choose(std::vector{0.0, 0.0}, 0, generator), failure);
    EXPECT_THROW(choose(std::vector{0.25, 0.0}, 1e9, generator), failure);
}

}  // namespace
