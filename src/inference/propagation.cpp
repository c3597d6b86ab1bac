// Message passing in a junction tree with division at the separators [Jensen, Lauritzen & Olesen 1990].
//
//   Maps     tables of the nodes, entered evidence -> marginals of all cliques, beliefs, probability of the evidence
//   Cost     three passes over every clique and one for each table, neighbour and belief in it, and more only in tables
//            whose entries come near the smallest double; allocates nothing but the records of threads
//   Method   the tables are multiplied together in the cliques; each clique sends its marginal to its parent, children
//            first (collect); the root is divided by its sum; then each clique sends its marginal back (distribute),
//            divided by the message that came from there
//   Scaling  messages and likelihoods are divided by their largest entry on the way up, and tables that have become small
//            by theirs, so that a product of many numbers below 1 does not vanish; all that was divided by, multiplied, is
//            the probability of the evidence
#include "propagation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "errors.h"
#include "evidence.h"
#include "kernels.h"
#include "table_operations.h"
#include "table_validation.h"

namespace quarn {
namespace {

// Below the first of these a double is less exact the smaller it is: what depends on such numbers has underflowed.
constexpr double smallest_exact = std::numeric_limits<double>::min();
constexpr double safely_exact = 1e-290;  // what becomes smaller is watched
constexpr double small = 1e-100;         // a table of such numbers is divided by the largest
constexpr double largest_ratio = std::numeric_limits<double>::max() / 2;

void require_exact(double number) { require(number >= smallest_exact, q_error_inconsistency_or_underflow); }

class tree_propagation {
public:
    tree_propagation(junction_forest& forest, junction_tree& tree, const workers& allowed)
        : forest_(forest), tree_(tree), workers_(allowed) {}

    void run(bool with_evidence) {
        reset();
        for (node* member : tree_.nodes) validate_distributions(*member);
        if (with_evidence) take_evidence();
        fill_cliques();
        collect();
        normalize_root();
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

    void fill_cliques() {
        for (clique* filled : tree_.cliques) {
            std::ranges::fill(filled->table, 1.0);
            filled->smallest_entry = 1;
            for (const assigned_table& assigned : filled->tables)
                multiply_into(*filled, assigned.in_clique, assigned.owner->own_table->data.span());
        }
        for (node* member : tree_.nodes) multiply_evidence(forest_.of(*member));
    }

    // All factors are at most 1. No entry gets lost unless it is negligible beside the largest one of its table.
    void multiply_into(clique& target, const loop_plan& plan, std::span<const double> factors) {
        multiply(plan, target.table.data(), factors.data(), workers_);
        target.smallest_entry *= magnitudes_of(factors.data(), factors.size()).smallest_positive;
        if (target.smallest_entry >= safely_exact && std::isfinite(target.smallest_entry)) return;
        const magnitudes entries = magnitudes_of(target.table.data(), target.table.size());
        require_exact(entries.largest);
        target.smallest_entry = entries.smallest_positive;
        if (entries.largest < small) divide(target, entries.largest);
    }

    void divide(clique& divided, double divisor) noexcept {
        scale(divided.table.data(), divided.table.size(), 1 / count_in(divisor));
        divided.smallest_entry /= divisor;
    }

    // Takes a number that was divided by into the probability of the evidence.
    double count_in(double divisor) noexcept {
        tree_.normalization *= divisor;
        tree_.log_normalization += std::log(divisor);
        return divisor;
    }

    void multiply_evidence(compiled_node& observed) {
        const findings& evidence = observed.propagated;
        if (evidence.index == findings::none) return;
        const std::span<double> weights(forest_.scratch.data(), observed.owner->state_count);
        for (std::size_t state = 0; state < weights.size(); ++state) weights[state] = evidence.weight(state);
        const double largest = magnitudes_of(weights.data(), weights.size()).largest;
        require(largest > 0, q_error_inconsistency_or_underflow);
        std::ranges::for_each(weights, [&](double& w) { w /= largest; });
        count_in(largest);
        multiply_into(*observed.best, observed.in_best, weights);
    }

    // The separator keeps the marginal as it is, to divide by later; what goes on is divided by its largest entry.
    void collect() {
        for (auto next = tree_.separators.rbegin(); next != tree_.separators.rend(); ++next) {
            separator& to_parent = **next;
            number_array& marginal = to_parent.table;
            sum_marginal(to_parent.in_child, to_parent.child->table.data(), marginal.data(), workers_);
            double largest = magnitudes_of(marginal.data(), marginal.size()).largest;
            require_exact(largest);
            if (largest < small) {
                divide(*to_parent.child, largest);
                scale(marginal.data(), marginal.size(), 1 / largest);
                largest = 1;
            }
            const std::span<double> message(forest_.scratch.data(), marginal.size());
            std::ranges::transform(marginal, message.begin(), [&](double p) { return p / largest; });
            count_in(largest);
            multiply_into(*to_parent.parent, to_parent.in_parent, message);
        }
    }

    void normalize_root() {
        number_array& root = tree_.root->table;
        const double sum = sum_of(root.data(), root.size());
        require_exact(sum);
        scale(root.data(), root.size(), 1 / count_in(sum));
    }

    // Without evidence the probability is 1 by definition.
    void forget_rounding() noexcept {
        tree_.normalization = 1;
        tree_.log_normalization = 0;
    }

    void distribute() {
        double* const marginal = forest_.scratch.data();
        for (separator* to_child : tree_.separators) {
            number_array& old = to_child->table;
            sum_marginal(to_child->in_parent, to_child->parent->table.data(), marginal, workers_);
            const double total = ratio(old.data(), marginal, old.size());
            require(total <= largest_ratio, q_error_inconsistency_or_underflow);
            multiply(to_child->in_child, to_child->child->table.data(), old.data(), workers_);
            std::copy_n(marginal, old.size(), old.data());
        }
    }

    void update_beliefs() {
        for (node* member : tree_.nodes) {
            compiled_node& updated = forest_.of(*member);
            double* const beliefs = forest_.beliefs.data() + updated.first_belief;
            sum_marginal(updated.in_best, updated.best->table.data(), beliefs, workers_);
            const double sum = sum_of(beliefs, member->state_count);
            std::for_each_n(beliefs, member->state_count, [&](double& belief) { belief /= sum; });
        }
    }

    junction_forest& forest_;
    junction_tree& tree_;
    workers workers_;
};

bool is_up_to_date(const junction_forest& forest, const junction_tree& tree) noexcept {
    return tree.equilibrium == q_equilibrium_sum && !tree.tables_changed &&
           std::ranges::none_of(tree.nodes,
                                [&](const node* n) { return has_evidence_to_propagate(forest.of(*n)); });
}

void propagate_tree(junction_forest& forest, junction_tree& tree, const workers& allowed) {
    if (is_up_to_date(forest, tree)) return;
    try {
        tree_propagation(forest, tree, allowed).run(true);
    } catch (...) {
        try {
            constexpr workers none{};  // needs no memory
            tree_propagation(forest, tree, none).run(false);
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
    require(compiled.counts.discrete == compiled.node_count && compiled.settings.excluded.empty() &&
            compiled.counts.of_category(q_category_chance) == compiled.node_count);
    for (const auto& tree : forest->trees) propagate_tree(*forest, *tree, compiled.workers);
}

}  // namespace quarn
