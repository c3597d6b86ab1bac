// Entering and asking for evidence: what is refused, what counts as changed, what the trees say of their evidence.
#include <map>
#include <random>

#include "scenarios.h"

using namespace scenarios;

namespace {

owned_domain binary_network(const std::string& letters, const std::string& links) {
    owned_domain domain = network(letters, links);
    for (q_node_t node : nodes_of(domain.get())) {
        q_node_set_number_of_states(node, 2);
        for (std::size_t i : {0u, 1u}) q_node_set_cg_variance(node, i, 1);
    }
    return domain;
}

owned_domain mixture() { return binary_network("cd cc fo", "01"); }
owned_domain propagated_mixture() {
    owned_domain domain = mixture();
    q_domain_compile(domain.get());
    EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    return domain;
}

TEST(evidence, is_asked_for_in_the_right_order_only) {
    enum : std::size_t { discrete, continuous, function };
    const auto tree_mode = [](q_domain_t domain, q_mode_t mode) {
        return q_junction_tree_evidence_mode_is(q_domain_get_first_junction_tree(domain), mode);
    };
    expect_refusals(propagated_mixture, q_error_usage, call(q_node_enter_value, discrete, 1.0),
                    call(q_node_select_state, continuous, 0), call(q_node_retract_findings, function),
                    call(q_node_get_propagated_state, continuous),
                    call(q_node_get_propagated_value, discrete), call(q_node_evidence_is_entered, function),
                    call(q_node_evidence_to_propagate, function),
                    call(q_domain_equilibrium_is, q_equilibrium_none), call(+tree_mode, 22));
    expect_refusals(propagated_mixture, q_error_no_value, call(q_node_get_entered_value, continuous),
                    call(q_node_get_propagated_value, continuous));
    const auto triangulated = [] {
        owned_domain domain = mixture();
        q_domain_triangulate(domain.get(), q_triangulate_best_greedy);
        return domain;
    };
    expect_refusals(triangulated, q_error_not_compiled, call(q_node_get_propagated_value, continuous),
                    call(q_domain_evidence_to_propagate), call(+tree_mode, q_mode_normal));
}

// Two trees whose tables have an excluded node in common, and one of a single state.
struct shared_exclusion {
    shared_exclusion() {
        const q_node_t excluded[] = {n[4], nullptr};
        q_domain_set_excluded_nodes(domain.get(), excluded);
        q_node_set_number_of_states(n[5], 1);
        EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
        for (std::size_t i : {0u, 2u, 5u}) cut_for[q_node_get_junction_tree(n[i])] = -1;
    }

    void change(std::mt19937& random) {
        q_node_t node = n[random() % n.size()];
        const std::size_t state = random() % 2, action = random() % 8;
        if (action == 0) q_domain_retract_findings(domain.get());
        if (action == 1) q_node_retract_findings(node);
        if (action == 2) q_node_select_state(node, state);
        if (action == 3) q_node_enter_value(n[3], double(state));
        if (action > 3) q_node_enter_finding(node, state, double(random() % 3) / 2);
        if (random() % 2 == 0) q_node_select_state(n[4], state);
        for (auto& [tree, state_cut] : cut_for)
            if (random() % 4 == 0 &&
                q_junction_tree_propagate(tree, q_equilibrium_sum, q_mode_normal) != q_error_invalid_evidence)
                state_cut = q_node_get_selected_state(n[4]);
    }

    void expect_consistency() const {
        bool any_changed = false;
        for (const auto& [tree, state_cut] : cut_for) {
            const auto any = [&, of = tree](q_boolean_t (*holds)(q_node_t)) {
                return std::ranges::any_of(n, [&](q_node_t node) {
                    return q_node_get_junction_tree(node) == of && holds(node) == 1;
                });
            };
            const bool is_stale = tree != q_node_get_junction_tree(n[5]) &&
                                  std::max<int64_t>(q_node_get_selected_state(n[4]), -1) != state_cut;
            const bool changed = any(q_node_evidence_to_propagate) || is_stale;
            any_changed = any_changed || changed;
            EXPECT_EQ(q_junction_tree_evidence_to_propagate(tree), changed);
            EXPECT_EQ(q_junction_tree_evidence_is_propagated(tree), any(q_node_evidence_is_propagated));
            EXPECT_EQ(q_junction_tree_likelihood_is_propagated(tree), any(q_node_likelihood_is_propagated));
            EXPECT_EQ(q_junction_tree_cg_evidence_is_propagated(tree),
                      tree == q_node_get_junction_tree(n[3]) && q_node_evidence_is_propagated(n[3]) == 1);
        }
        EXPECT_EQ(q_domain_evidence_to_propagate(domain.get()), any_changed);
    }

    owned_domain domain = binary_network("cd cd cd cc cd cd", "01 23 40 42");
    nodes n = nodes_of(domain.get());
    std::map<q_junction_tree_t, int64_t> cut_for;  // the state of the excluded node at the last propagation
};

TEST(evidence, is_counted_tree_by_tree) {
    for (unsigned seed = 0; seed < 200 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        shared_exclusion tested;
        for (int step = 0; step < 40; ++step) {
            tested.expect_consistency();
            tested.change(random);
        }
    }
}

}  // namespace
