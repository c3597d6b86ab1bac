// Random networks of every kind, always against enumeration of the joint distribution.
#include <future>

#include "fault_plan.h"
#include "model.h"

namespace {

class agreement : public testing::TestWithParam<kind> {};

void use_threads(const model& tested, std::size_t level, std::size_t grain) {
    q_domain_t domain = tested.domain;
    EXPECT_TRUE(q_domain_get_concurrency_level(domain) == 1 && q_domain_get_grain_size(domain) == 10000);
    q_domain_set_concurrency_level(domain, level);
    q_domain_set_grain_size(domain, grain);
    EXPECT_TRUE(q_domain_get_concurrency_level(domain) == level && q_domain_get_grain_size(domain) == grain);
}

void expect_predicates_of_trees(const model& tested) {
    bool any_changed = false;
    for (q_junction_tree_t tree : tested.trees()) {
        const auto any = [&](q_boolean_t (*holds)(q_node_t), bool is_continuous = false) {
            for (std::size_t i = 0; i < tested.nodes.size(); ++i)
                if (!tested.is_utility(i) && tested.tree_of(i) == tree && holds(tested.nodes[i]) == 1 &&
                    (!is_continuous || !tested.is_discrete(i)))
                    return 1u;
            return 0u;
        };
        const auto expect_agreement = [&](q_boolean_t of_tree, q_boolean_t of_nodes) {
            EXPECT_TRUE(of_tree == of_nodes || (of_tree == 1 && tested.of.excludes));  // of excluded nodes
        };
        const q_boolean_t changed = q_junction_tree_evidence_to_propagate(tree);
        any_changed = any_changed || changed == 1;
        expect_agreement(changed, any(q_node_evidence_to_propagate));
        expect_agreement(q_junction_tree_evidence_is_propagated(tree), any(q_node_evidence_is_propagated));
        EXPECT_EQ(q_junction_tree_likelihood_is_propagated(tree), any(q_node_likelihood_is_propagated));
        EXPECT_EQ(q_junction_tree_cg_evidence_is_propagated(tree), any(q_node_evidence_is_propagated, true));
    }
    EXPECT_EQ(q_domain_evidence_to_propagate(tested.domain), any_changed ? 1u : 0u);
}

TEST_P(agreement, with_enumeration_through_changes_of_all_kinds) {
    std::size_t successes = 0;
    for (unsigned seed = 1; seed <= GetParam().seeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        model tested(seed, GetParam());
        tested.run(12);
        expect_predicates_of_trees(tested);
        successes += tested.successes;
    }
    EXPECT_GT(successes, 4 * GetParam().seeds) << "most tests test nothing";
}

TEST_P(agreement, to_the_bit_for_any_number_of_threads) {
    for (unsigned seed = 1; seed <= 20 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto run = [&](unsigned level) {
            auto tested = std::make_unique<model>(4 * seed + 3, GetParam());
            use_threads(*tested, level, 1 + seed * level % 7);
            tested->run(8);
            return tested;
        };
        model first(4 * seed + 3, GetParam());
        first.run(8);
        auto meanwhile = std::async(seed == 1 ? std::launch::async : std::launch::deferred, run, 2u);
        for (unsigned level : {1u, 4u}) EXPECT_TRUE(run(level)->has_recorded_the_same(first));
        EXPECT_TRUE(meanwhile.get()->has_recorded_the_same(first));
    }
}

TEST_P(agreement, after_lack_of_memory) {
    if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    for (unsigned run = 2; run < 26; ++run) {
        const unsigned seed = run / 2;
        bool fired = true;  // else there is no later allocation
        for (std::size_t n = 0; fired && !HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "run " << run << ", allocation " << n);
            model tested(seed, GetParam());
            if (seed % 4 == 3) use_threads(tested, 4, 1);
            if (seed % 3 == 0) tested.propagate({});
            if (seed % 3 == 0 && GetParam().compresses) tested.compress();
            for (int i = 0; i < 4; ++i) tested.change_evidence();
            if (tested.is_invalid()) tested.start_again();
            const request asked = tested.random_request();
            fault_plan plan(n, run % 2 == 0);
            const q_status_t status = asked.of(tested.domain);
            fired = plan.stop();
            EXPECT_TRUE(fired || status != q_error_no_memory);
            for (q_junction_tree_t tree : tested.trees())
                EXPECT_TRUE(status != q_error_no_memory || tested.has_recovered(tree) ||
                            tested.trees().size() > 1 ||
                            q_junction_tree_evidence_mode_is(tree, q_mode_normal) > 1);
            tested.expect_entered_evidence();
            tested.propagate(asked);
            tested.owned.reset();
            EXPECT_EQ(plan.leaked(), 0u);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(of, agreement, testing::ValuesIn(kinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

// Weights that change by many orders of magnitude, never starting afresh.
TEST(agreement, lasts_through_many_changes) {
    const kind discrete{"discrete", {role::chance}};
    model tested(15, discrete);
    for (int i = 0; i < 100000; ++i) {
        tested.change_evidence();
        ASSERT_EQ(q_domain_propagate(tested.domain, q_equilibrium_sum, q_mode_normal), q_error_none);
    }
    tested.exact = 1e-10;
    tested.propagate({});
}

TEST(agreement, with_a_closed_form_far_below_the_doubles) {
    owned_domain domain(q_domain_new());
    q_node_t last = nullptr;
    double logarithm = 0;
    for (std::size_t i = 0; i < 100000; ++i) {
        q_node_t node = new_chance(domain.get(), nullptr, 2);
        const double p = 0.1 + 0.8 * double(i % 17) / 17;
        std::vector<double> rows{p, 1 - p, 1 - p, p};
        last == nullptr ? rows.resize(2) : void(q_node_add_parent(node, last));
        set_data(q_node_get_table(node), rows);
        q_node_select_state(node, i % 2);  // the other one than in the parent
        logarithm += std::log(last == nullptr ? p : 1 - p);
        last = node;
    }
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    ASSERT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    EXPECT_NEAR(q_domain_get_log_normalization_constant(domain.get()) / logarithm, 1, 1e-10);
}

}  // namespace
