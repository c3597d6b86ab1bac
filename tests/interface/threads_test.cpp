// Propagation on several threads: the same results to the bit, whatever fails on the way.
#include <future>
#include <random>

#include "allocation_faults.h"
#include "enumeration.h"
#include "network_building.h"
namespace {
// Compiled, with evidence that is not propagated yet.
owned_domain random_domain(unsigned seed, std::size_t nodes, std::size_t level) {
    owned_domain made(q_domain_new());
    q_domain_t const domain = made.get();
    std::mt19937 random(seed);
    EXPECT_TRUE(q_domain_get_concurrency_level(domain) == 1 && q_domain_get_grain_size(domain) == 10000);
    for (const oracle::variable& v : oracle::random_network(random, {nodes, 6, 4, false})) {
        q_node_t node = new_chance(domain, nullptr, v.states);
        q_node_enter_finding(node, 0, 0.3);
        for (const std::size_t parent : v.parents) q_node_add_parent(node, node_at(domain, parent));
        set_data(q_node_get_table(node), v.table);
    }
    q_domain_compile(domain);
    EXPECT_EQ(q_domain_set_concurrency_level(domain, level) | q_domain_set_grain_size(domain, 1), 0);
    EXPECT_EQ(q_domain_set_concurrency_level(domain, 0), q_error_usage);
    EXPECT_EQ(q_domain_set_grain_size(domain, 0), q_error_usage);
    EXPECT_TRUE(q_domain_get_concurrency_level(domain) == level && q_domain_get_grain_size(domain) == 1);
    return made;
}

std::vector<double> propagated(const owned_domain& domain) {
    EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    std::vector<double> results{q_domain_get_log_normalization_constant(domain.get())};
    for (q_node_t node : nodes_of(domain.get()))
        for (std::size_t state = 0; state < q_node_get_number_of_states(node); ++state)
            results.push_back(q_node_get_belief(node, state));
    return results;
}

TEST(threads, do_not_change_a_bit_of_the_results) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const auto alone = propagated(random_domain(seed, 12, 1));
        auto other = std::async(std::launch::async, [=] { return propagated(random_domain(seed, 12, 2)); });
        EXPECT_EQ(propagated(random_domain(seed, 12, 4)), alone) << seed;
        EXPECT_EQ(other.get(), alone) << seed;
    }
}

TEST(threads, lack_of_memory_leaves_a_network_that_can_be_propagated) {
    if (!allocation_faults::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    const auto right = propagated(random_domain(5, 7, 1));
    for (const bool lasting : {false, true})
        for (auto [n, fired] = std::pair<std::size_t, bool>(0, true); fired && !HasFailure(); ++n) {
            owned_domain domain = random_domain(5, 7, 4);
            allocation_faults faults(n, lasting);
            const q_status_t status = q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal);
            fired = faults.stop();
            EXPECT_TRUE(status == q_error_none || (fired && status == q_error_no_memory)) << n;
            EXPECT_EQ(propagated(std::exchange(domain, nullptr)), right) << n;
            EXPECT_EQ(faults.leaked(), 0u) << n;
        }
}
}  // namespace
