// What a propagation does with a tree.
//
//   Maps     tables of the nodes, entered evidence -> tables of all cliques, beliefs, probability of the evidence
//   Cost     as message_passing, and one pass over a table for each change of evidence and for each belief in it;
//            multiplying the tables of the nodes together first when they, or more than can be divided out, have changed
//   Method   evidence is multiplied into calibrated tables, divided by what it replaces. Where it takes something back
//            that made entries 0, these start again from the saved ones without evidence.
#include "propagation.h"

#include <algorithm>
#include <cmath>

#include "absorption.h"
#include "beliefs.h"
#include "errors.h"
#include "evidence.h"
#include "free_will.h"
#include "function_nodes.h"
#include "initial_tables.h"
#include "log_weights.h"
#include "message_passing.h"
#include "moments.h"
#include "table_slices.h"

namespace quarn {
namespace {

class tree_propagation {
public:
    tree_propagation(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode,
                     clique* root) noexcept
        : in_(in), tree_(in.tree), equilibrium_(equilibrium), mode_(mode), root_(root) {}

    void run() {
        const bool starts_again = must_start_again();
        if (!starts_again && is_up_to_date()) return;
        try {
            update(starts_again);
        } catch (...) {
            recover();
            throw;
        }
    }

    void recover() noexcept {
        in_.workers = {};  // so that no memory is needed for threads
        equilibrium_ = q_equilibrium_sum;
        mode_ = q_mode_normal;
        try {
            require(failed_function(tree_) == q_error_none, failed_function(tree_));
            restore_prior(in_, policies::all);
            finish();
        } catch (...) {  // the tables themselves are at fault, or there is no memory even for this
            reset_tree(in_);
        }
    }

private:
    bool is_up_to_date() const noexcept {
        return tree_.equilibrium == equilibrium_ && tree_.changed_evidence == 0 &&
               (tree_.mode == mode_ || !tree_.evidence_is_propagated);
    }

    bool must_start_again() const noexcept {
        if (tree_.equilibrium == q_equilibrium_none || tree_.tables_changed ||
            has_stale_slice(in_.forest, tree_) || decisions_changed(in_.forest, tree_))
            return true;
        if (tree_.mode != mode_ && tree_.evidence_is_propagated) return true;
        if (tree_.changed_evidence == 0) return false;
        return !tree_.is_extensible || (mode_ == q_mode_normal && !extends_propagated(in_.forest, tree_));
    }

    // Evidence that cannot be taken in on top of other evidence perhaps can without it, and what gets lost in ordinary
    // numbers does not in logarithms.
    void update(bool starts_again) {
        if (!starts_again) {
            try {
                if (absorb_exactly()) return;
            } catch (const failure&) {}
        }
        start_again();
        if (absorb_exactly()) return;
        start_in_logarithms();
        absorb();
    }

    // Returns whether nothing was lost.
    bool absorb_exactly() {
        try {
            absorb();
        } catch (const failure&) {
            if (tree_.is_extensible || mode_ == q_mode_fast_retraction) throw;
            return false;
        }
        const bool is_exact = tree_.is_extensible || !tree_.evidence_is_propagated;
        require(is_exact || mode_ == q_mode_normal, q_error_fast_retraction);
        return is_exact;
    }

    // From the tables without evidence; where no copy of these can be kept, evidence goes in before the first messages. In
    // a compressed domain some of what the tables allow may be left out: all that is left is certain.
    void start_again() {
        reset_tree(in_);
        if (mode_ == q_mode_fast_retraction || tree_.changed_evidence == 0 || may_save_tables(in_.forest) ||
            (in_.forest.is_compressed && tree_.tables_changed))
            return restore_prior(in_, policies::of_open_decisions);
        fill_tables(in_, policies::of_open_decisions);
        if (in_.forest.is_compressed) count_in(tree_, std::exp(-tree_.prior_excess));
    }

    void start_in_logarithms() {
        reset_tree(in_);
        fill_tables(in_, policies::of_open_decisions, number_scale::logarithmic);
        if (in_.forest.is_compressed) count_in(tree_, std::exp(-tree_.prior_excess));
        absorb_findings_as_logarithms(in_);
        log_weights weights(in_);
        weights.calibrate();
        absorb_values(in_, weights);
        weights.restore();
    }

    void absorb() {
        const bool is_calibrated = tree_.equilibrium == equilibrium_;
        for (clique* told : tree_.cliques) told->is_active = !is_calibrated;
        if (mode_ == q_mode_fast_retraction) plan_retraction(in_.forest, tree_);
        absorb_findings(in_, mode_);
        pass();
        if (tree_.has_continuous_nodes) {
            absorb_values(in_);
            pass();
        }
        tree_.mode = mode_;
        tree_.equilibrium = equilibrium_;
        finish();
    }

    void pass() {
        if (std::ranges::any_of(tree_.cliques, [](const clique* told) { return told->is_active; }))
            pass_messages(in_, equilibrium_, mode_, root_);
    }

    void finish() {
        update_evidence_flags(in_.forest, tree_);
        count_changed_evidence(in_.forest, tree_);
        if (tree_.equilibrium == q_equilibrium_sum) forget_rounding();
        update_results(in_, tree_.equilibrium, tree_.mode);
    }

    // What is known beforehand is known to the bit: nothing but decisions is given.
    void forget_rounding() noexcept {
        if (!tree_.evidence_is_propagated) return quarn::forget_rounding(tree_);
        const auto is_free_or_made = [&](const node* member) {
            const compiled_node& compiled = in_.forest.of(*member);
            return compiled.policy_is_left_out ||
                   (compiled.propagated_index == findings::none && !compiled.value_is_propagated);
        };
        if (!in_.forest.excluded().empty() || !std::ranges::all_of(tree_.nodes, is_free_or_made)) return;
        tree_.normalization = 1;
        tree_.log_normalization = 0;
    }

    tree_context in_;
    junction_tree& tree_;
    q_equilibrium_t equilibrium_;
    q_mode_t mode_;
    clique* root_;
};

void require_known(q_equilibrium_t equilibrium, q_mode_t mode) {
    require(equilibrium == q_equilibrium_sum || equilibrium == q_equilibrium_max);
    require(mode == q_mode_normal || mode == q_mode_fast_retraction);
}

bool is_ordinary(q_equilibrium_t equilibrium, q_mode_t mode) noexcept {
    return equilibrium == q_equilibrium_sum && mode == q_mode_normal;
}

bool has_only_discrete_chance_nodes(const domain& asked) noexcept {
    return asked.counts.discrete == asked.node_count &&
           asked.counts.of_category(q_category_chance) == asked.node_count;
}

}  // namespace

void propagate(domain& compiled, q_equilibrium_t equilibrium, q_mode_t mode) {
    require_known(equilibrium, mode);
    junction_forest* const forest = forest_of(compiled);
    require(forest != nullptr, q_error_not_compiled);
    require(is_ordinary(equilibrium, mode) || has_only_discrete_chance_nodes(compiled));
    require(mode == q_mode_normal || !forest->is_compressed, q_error_compressed);
    for (const auto& tree : forest->trees) require_free_will(compiled, *tree);
    require_excluded_are_instantiated(compiled);
    const auto propagate_each = [&](junction_tree& tree) {
        propagate_tree({*forest, tree, compiled.workers}, equilibrium, mode);
    };
    propagate_in_order(compiled, *forest, std::ref(propagate_each));
}

void propagate(junction_tree& tree, clique* root, q_equilibrium_t equilibrium, q_mode_t mode) {
    require_known(equilibrium, mode);
    domain& compiled = *tree.root->members[0]->domain;
    junction_forest* const forest = forest_of(compiled);
    require(forest != nullptr, q_error_not_compiled);
    require(is_ordinary(equilibrium, mode) || (!tree.has_continuous_nodes && forest->utilities.empty()));
    require(mode == q_mode_normal || !forest->is_compressed, q_error_compressed);
    require_free_will(compiled, tree);
    require_excluded_are_instantiated(compiled);
    const tree_context in{*forest, tree, compiled.workers};
    require(update_functions(compiled), q_error_no_memory);
    if (const q_error_t failed = failed_function(tree); failed != q_error_none) {
        reset_tree(in);
        throw failure(failed);
    }
    try {
        propagate_tree(in, equilibrium, mode, root);
    } catch (...) {
        update_functions(compiled);
        throw;
    }
    require(update_functions(compiled), q_error_no_memory);
}

void propagate_tree(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode, clique* root) {
    tree_propagation(in, equilibrium, mode, root).run();
}

void recover(const tree_context& in) noexcept {
    tree_propagation(in, q_equilibrium_sum, q_mode_normal, nullptr).recover();
}

}  // namespace quarn
