// Compressed domains: what they refuse, how much memory they give back, and what can occur in them afterwards.
#include <malloc.h>

#include <gmock/gmock.h>

#include "scenarios.h"

namespace {

// A node, four that have its state or the next one, and a node for any two of these that follow each other.
owned_domain copies(std::size_t states) {
    owned_domain domain(q_domain_new());
    std::vector<double> same_or_next(states * states, 0.0);
    for (std::size_t i = 0; i < same_or_next.size(); ++i) same_or_next[i] = i % (states + 1) < 2;
    const q_node_t original = new_chance(domain.get(), "o", states);
    q_node_t last = nullptr;
    for (const std::string name : {"a", "b", "c", "d"}) {
        const q_node_t copy = new_chance(domain.get(), name.c_str(), states, {original});
        with_table(copy, same_or_next);
        if (last != nullptr) new_chance(domain.get(), (name + "2").c_str(), 2, {last, copy});
        last = copy;
    }
    return propagated(std::move(domain));
}

TEST(compression, gives_memory_back) {
    const auto used = [] { return static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd); };
    const double none = used();
    const owned_domain domain = copies(50);
    const double before = used() - none;  // 0: another allocator is at work
    EXPECT_LT(q_domain_compress(domain.get()), 0.05);
    EXPECT_TRUE(before <= 0 || used() - none < before / 4) << used();
    EXPECT_EQ(q_domain_compress(domain.get()), 1) << "nothing more to leave out";
}

// Positions in the separators take one byte, two or four; and where the evidence is nearly impossible, logarithms.
TEST(compression, of_tables_of_all_sizes_changes_no_result) {
    for (std::size_t states : {3u, 20u, 300u})
        for (double weight : {0.5, 1e-200}) {
            std::vector<std::vector<double>> results;
            for (bool compressed : {false, true}) {
                const owned_domain domain(q_domain_new());
                std::vector<double> different(states * states), children(2 * states * states);
                for (std::size_t i = 0; i < different.size(); ++i) different[i] = i % (states + 1) != 0;
                for (std::size_t i = 0; i < children.size(); ++i) children[i] = double(1 + i * i % 7);
                const q_node_t a = new_chance(domain.get(), "a", states);
                const q_node_t b = with_table(new_chance(domain.get(), "b", states, {a}), different);
                std::vector<q_node_t> observed;
                for (const char* name : {"x", "y", "z"})
                    observed.push_back(with_table(new_chance(domain.get(), name, 2, {a, b}), children));
                EXPECT_EQ(propagate(domain), q_error_none);
                EXPECT_TRUE(!compressed || q_domain_compress(domain.get()) > 0);
                for (q_node_t node : observed)
                    for (std::size_t state : {0u, 1u})
                        q_node_enter_finding(node, state, weight / double(1 + state));
                EXPECT_EQ(propagate(domain), q_error_none);
                std::vector<double>& result = results.emplace_back();
                result.push_back(q_domain_get_log_normalization_constant(domain.get()));
                for (q_node_t node : {a, b, observed[0]})
                    for (std::size_t state = 0; state < q_node_get_number_of_states(node); ++state)
                        result.push_back(q_node_get_belief(node, state));
            }
            EXPECT_THAT(results[1], testing::Pointwise(testing::DoubleNear(1e-12), results[0])) << states;
        }
}

TEST(compression, keeps_what_is_possible_and_revives_nothing) {
    const owned_domain domain(q_domain_new());
    const auto binary = [&](const char* name, q_node_t parent, const std::vector<double>& numbers) {
        return with_table(new_chance(domain.get(), name, 2, {parent}), numbers);
    };
    const q_node_t a = new_chance(domain.get(), "a", 2), b = binary("b", a, {1, 0, .5, .5});
    const auto compress = [](q_domain_t tested) { return outcome(q_domain_compress(tested)); };
    EXPECT_EQ(compress(domain.get()), q_error_not_compiled);
    q_domain_compile(domain.get());
    EXPECT_EQ(compress(domain.get()), q_error_no_equilibrium);
    q_node_select_state(b, 1);
    propagate(domain);
    EXPECT_EQ(compress(domain.get()), q_error_none);
    EXPECT_TRUE(q_domain_is_compressed(domain.get()) && q_domain_evidence_to_propagate(domain.get()));
    EXPECT_EQ(q_node_get_belief(a, 0), .5);
    EXPECT_EQ(propagate(domain), q_error_none);
    EXPECT_DOUBLE_EQ(q_domain_get_normalization_constant(domain.get()), .25);

    with_table(b, {.25, .75, .5, .5});  // of which .125, .25 and .25 can occur
    EXPECT_EQ(propagate(domain), q_error_none);
    EXPECT_EQ(q_node_get_belief(a, 0), 0);
    EXPECT_DOUBLE_EQ(q_domain_get_normalization_constant(domain.get()), .4);
    q_domain_uncompile(domain.get());
    EXPECT_EQ(q_domain_is_compressed(domain.get()), 0u);
    for (const auto& refused : {network("cc"), network("cd uo", "01"), network("cd")}) {
        const q_node_t excluded[] = {node_at(refused.get(), 0), nullptr};
        q_domain_set_excluded_nodes(refused.get(), excluded);
        EXPECT_EQ(compress(refused.get()), q_error_usage);
    }
    const auto compress_or_restore = [&](q_domain_t tested) {
        const q_status_t status = compress(tested);
        EXPECT_EQ(q_domain_is_compressed(tested), status == q_error_none ? 1u : 0u);
        EXPECT_EQ(q_node_get_belief(q_domain_get_first_node(tested), 0), .5);
        return status;
    };
    expect_survives_lack_of_memory({"compress", [] { return copies(2); }, compress_or_restore, true});
}

}  // namespace
