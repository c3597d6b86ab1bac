// Message passing in a junction tree with division at the separators [Jensen, Lauritzen & Olesen 1990].
//
//   Maps     tables of the nodes, entered evidence -> marginals of all cliques, beliefs, probability of the evidence
//   Cost     three passes over every clique and one for each table, neighbour and belief in it; allocates nothing
//   Method   the tables are multiplied together in the cliques; each clique sends its marginal to its parent, children
//            first (collect); the root is divided by its sum; then each clique sends its marginal back (distribute),
//            divided by the message that came from there
//   Scaling  a message is divided by its sum on the way up, so that a product of many small numbers does not vanish;
//            the sums, multiplied, are the probability of the evidence
#include "propagation.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "errors.h"
#include "evidence.h"
#include "kernels.h"
#include "table_operations.h"
#include "table_validation.h"

namespace quarn {
namespace {

// A sum to divide by: neither vanished nor beyond all numbers.
double checked_sum(const number_array& numbers) {
    const double sum = sum_of(numbers.data(), numbers.size());
    require(sum < std::numeric_limits<double>::max(), q_error_overflow);
    require(sum >= std::numeric_limits<double>::min(), q_error_inconsistency_or_underflow);
    return sum;
}

class tree_propagation {
public:
    tree_propagation(junction_forest& forest, junction_tree& tree) : forest_(forest), tree_(tree) {}

    void run(bool with_evidence) {
        reset();
        for (node* member : tree_.nodes) validate_distributions(*member);
        if (with_evidence) take_evidence();
        fill_cliques();
        collect();
        scale(tree_.root->table.data(), tree_.root->table.size(),
              1 / count_in(checked_sum(tree_.root->table)));
        distribute();
        update_beliefs();
        if (!tree_.evidence_is_propagated) forget_rounding();
        tree_.tables_changed = false;
        tree_.equilibrium = q_equilibrium_sum;
    }

private:
    void reset() noexcept {
        tree_.equilibrium = q_equilibrium_none;
        tree_.evidence_is_propagated = false;
        tree_.normalization = 1;
        tree_.log_normalization = 0;
        for (node* member : tree_.nodes) forest_.of(*member).propagated.index = findings::none;
    }

    void take_evidence() {
        for (node* member : tree_.nodes) {
            findings& propagated = forest_.of(*member).propagated;
            propagated = member->evidence;
            if (propagated.index != findings::none) tree_.evidence_is_propagated = true;
        }
    }

    void fill_cliques() noexcept {
        for (clique* filled : tree_.cliques) {
            std::ranges::fill(filled->table, 1.0);
            for (const assigned_table& assigned : filled->tables)
                multiply(assigned.in_clique, filled->table.data(), assigned.owner->own_table->data.data());
        }
        for (node* member : tree_.nodes) multiply_evidence(forest_.of(*member));
    }

    void multiply_evidence(compiled_node& observed) noexcept {
        const findings& evidence = observed.propagated;
        if (evidence.index == findings::none) return;
        double* const weights = forest_.scratch.data();
        for (std::size_t state = 0; state < observed.owner->state_count; ++state)
            weights[state] = evidence.weight(state);
        multiply(observed.in_best, observed.best->table.data(), weights);
    }

    // Takes a sum that was divided by into the probability of the evidence.
    double count_in(double sum) noexcept {
        tree_.normalization *= sum;
        tree_.log_normalization += std::log(sum);
        return sum;
    }

    // The message that goes on is divided by its sum; the separator keeps the marginal itself, to divide by later.
    void collect() {
        double* const scaled = forest_.scratch.data();
        for (auto next = tree_.separators.rbegin(); next != tree_.separators.rend(); ++next) {
            separator& to_parent = **next;
            number_array& marginal = to_parent.table;
            sum_marginal(to_parent.in_child, to_parent.child->table.data(), marginal.data(), marginal.size());
            const double factor = 1 / count_in(checked_sum(marginal));
            std::ranges::transform(marginal, scaled, [&](double p) { return p * factor; });
            multiply(to_parent.in_parent, to_parent.parent->table.data(), scaled);
        }
    }

    // Without evidence the probability is 1 by definition.
    void forget_rounding() noexcept {
        tree_.normalization = 1;
        tree_.log_normalization = 0;
    }

    void distribute() noexcept {
        double* const marginal = forest_.scratch.data();
        for (separator* to_child : tree_.separators) {
            number_array& old = to_child->table;
            sum_marginal(to_child->in_parent, to_child->parent->table.data(), marginal, old.size());
            ratio(old.data(), marginal, old.size());
            multiply(to_child->in_child, to_child->child->table.data(), old.data());
            std::copy_n(marginal, old.size(), old.data());
        }
    }

    void update_beliefs() noexcept {
        for (node* member : tree_.nodes) {
            compiled_node& updated = forest_.of(*member);
            double* const beliefs = forest_.beliefs.data() + updated.first_belief;
            sum_marginal(updated.in_best, updated.best->table.data(), beliefs, member->state_count);
            if (updated.propagated.index < 0) continue;
            std::fill_n(beliefs, member->state_count, 0.0);
            beliefs[updated.propagated.index] = 1;
        }
    }

    junction_forest& forest_;
    junction_tree& tree_;
};

bool is_up_to_date(const junction_forest& forest, const junction_tree& tree) noexcept {
    return tree.equilibrium == q_equilibrium_sum && !tree.tables_changed &&
           std::ranges::none_of(tree.nodes,
                                [&](const node* n) { return has_evidence_to_propagate(forest.of(*n)); });
}

void propagate_tree(junction_forest& forest, junction_tree& tree) {
    if (is_up_to_date(forest, tree)) return;
    tree_propagation propagation(forest, tree);
    try {
        propagation.run(true);
    } catch (...) {
        try {
            propagation.run(false);
        } catch (...) {  // the tables themselves are at fault: the tree stays without equilibrium
        }
        throw;
    }
}

}  // namespace

void propagate(domain& compiled, q_equilibrium_t equilibrium, q_mode_t mode) {
    require(equilibrium == q_equilibrium_sum && mode == q_mode_normal);
    junction_forest* const forest = forest_of(compiled);
    require(forest != nullptr, q_error_not_compiled);
    for (const auto& tree : forest->trees) propagate_tree(*forest, *tree);
}

}  // namespace quarn
