// Single policy updating [Lauritzen & Nilsson 2001].
//
//   Maps     policies -> policies of no less expected utility, which no change of a single one improves
//   Cost     one pass over the tree for the first decision, then over the cliques between one decision and the next, as
//            often as policies change
//   Method   the policy of one decision is taken out, the rest of the network told to its clique, and in each
//            configuration of its parents all weight given to optimal states; again and again until none changes. In a
//            soluble diagram, begun with policies without zeros, the first round finds the global optimum: decisions come
//            after those that follow them in time.
#include "policy_updating.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "absorption.h"
#include "decision_order.h"
#include "errors.h"
#include "evidence.h"
#include "function_nodes.h"
#include "initial_tables.h"
#include "limid_messages.h"
#include "propagation.h"
#include "table_slices.h"

namespace quarn {
namespace {

class tree_update {
public:
    tree_update(const tree_context& in, std::vector<open_decision> decisions) noexcept
        : in_(in), decisions_(std::move(decisions)) {}

    void run() {
        prepare_tables();
        limid_messages messages(in_, decisions_);
        const double noise = rounding_of_utilities();
        std::size_t unchanged = 0;
        for (std::size_t next = 0; unchanged < decisions_.size(); next = (next + 1) % decisions_.size()) {
            const open_decision& visited = decisions_[next];
            ++unchanged;
            if (!improve(visited, messages.collect(visited), noise)) continue;
            messages.invalidate(visited);
            unchanged = 1;
        }
    }

private:
    // Each clique given its parent in the tree, as far as probabilities go, so that products of them stay in range.
    void prepare_tables() {
        reset_tree(in_);
        fill_tables(in_, policies::none, number_scale::logarithmic);
        absorb_findings_as_logarithms(in_);
        log_weights(in_).restore();
        for (separator* link : in_.tree.separators)
            divide(*link->in_child.loops(), link->child->weights().data(), link->table.data(), in_.workers);
    }

    // Less than that is noise, even where the utilities cancel each other.
    double rounding_of_utilities() const {
        double largest = 0;
        for (const clique* home : in_.tree.cliques)
            for (const assigned_table& assigned : home->utility_tables)
                largest += std::abs(*std::ranges::max_element(assigned.numbers().data, {},
                                                              [](double u) { return std::abs(u); }));
        return 64 * std::numeric_limits<double>::epsilon() * largest;
    }

    bool improve(const open_decision& visited, const clique_tables& tables, double noise) {
        table& policy =
            visited.policy->slice != nullptr ? *visited.policy->slice : *visited.decision->own_table;
        number_array expected(2 * policy.size);
        const std::span<double> utilities = expected.span().subspan(policy.size);
        pair_marginal(*visited.policy->in_clique.loops(), tables.probabilities.data(),
                      tables.utilities.data(), expected.data(), utilities.data(), in_.workers);
        const std::size_t states = visited.decision->state_count;  // the decision itself varies fastest
        bool improved = false;
        for (std::size_t row = 0; row < policy.size; row += states)
            improved |=
                improve_row(policy.data.span().subspan(row, states), utilities.subspan(row, states), noise);
        if (improved) store_slice(in_.forest, *visited.policy);
        return improved;
    }

    tree_context in_;
    std::vector<open_decision> decisions_;
};

std::vector<open_decision> open_decisions(const tree_context& in, std::span<node* const> ordered) {
    std::vector<open_decision> open;
    for (node* decision : ordered) {
        const compiled_node& compiled = in.forest.of(*decision);
        if (compiled.tree != &in.tree || compiled.home == nullptr || decision->state_count == 1 ||
            decision->evidence.index != findings::none)
            continue;
        const auto policy = std::ranges::find(compiled.home->tables, decision, &assigned_table::owner);
        open.push_back({decision, compiled.home, &*policy});
    }
    return open;
}

void require_clean(const junction_forest& forest) {
    for (const auto& tree : forest.trees)
        require(tree->equilibrium == q_equilibrium_sum && !tree->tables_changed &&
                tree->changed_evidence == 0 && !has_stale_slice(forest, *tree) &&
                (tree->mode == q_mode_normal || !tree->evidence_is_propagated));
}

void update_tree(const tree_context& in, std::span<node* const> ordered) {
    std::vector<open_decision> open = open_decisions(in, ordered);
    if (open.empty() || !in.tree.has_utilities) return;
    in.tree.tables_changed = true;  // the policies
    try {
        tree_update(in, std::move(open)).run();
    } catch (...) {
        recover(in);
        throw;
    }
    in.tree.tables_changed = true;
}

}  // namespace

bool improve_row(std::span<double> policy, std::span<const double> utilities, double noise) noexcept {
    const double largest = *std::ranges::max_element(utilities);
    const double nearly = largest * (largest >= 0 ? 0.9999999999990008 : 1.0000000000009992);
    const double least = std::min(nearly, largest - noise);
    bool changed = false;
    double sum = 0, optimal = 0;
    for (std::size_t state = 0; state < policy.size(); ++state) {
        if (utilities[state] >= least) {
            ++optimal;
            sum += policy[state];
        } else if (policy[state] > 0) {
            policy[state] = 0;
            changed = true;
        }
    }
    if (!changed) return false;
    for (std::size_t state = 0; state < policy.size(); ++state)
        if (utilities[state] >= least) policy[state] = sum > 0 ? policy[state] / sum : 1 / optimal;
    return true;
}

void update_policies(domain& compiled) {
    junction_forest* const forest = forest_of(compiled);
    require(forest != nullptr, q_error_not_compiled);
    require_clean(*forest);
    if (forest->utilities.empty()) return;
    const std::vector<node*> ordered = order_decisions(compiled);
    const auto update_and_propagate = [&](junction_tree& tree) {
        const tree_context in{*forest, tree, compiled.workers};
        update_tree(in, ordered);
        propagate_tree(in, q_equilibrium_sum, q_mode_normal);
    };
    propagate_in_order(compiled, *forest, std::ref(update_and_propagate));
}

}  // namespace quarn
