// Collecting and distributing marginals in a junction tree with division at the separators [Jensen, Lauritzen & Olesen
// 1990], with utilities [Lauritzen & Nilsson 2001, Jensen, Jensen & Dittmer 1994], for maxima [Dawid 1992] and such that
// evidence can be retracted fast [Cowell & Dawid 1992]. Continuous nodes take no part: in a strongly rooted tree the weights
// of their tables are a junction tree of their own.
//
//   Maps     tables whose quotient, cliques by separators, is the joint distribution -> the same, every table a marginal
//   Cost     one pass over each clique to send and one to receive; none where nothing has changed, on the way up
//   Method   each clique sends its marginal, divided by the last one over the same separator
#pragma once

#include <vector>

#include "scaling.h"

namespace quarn {

class message_passing {
public:
    // Collects from the cliques marked active, and those between them, to the root. Fast retraction needs the plans made
    // by plan_retraction().
    message_passing(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode, clique& root);

    // Collect, divide the root by its sum (or largest entry), distribute. Fails with q_error_inconsistency_or_underflow or
    // q_error_fast_retraction, the tables then being of no use.
    void run();

private:
    void collect();
    void normalize_root();
    void distribute();
    void collect_over(separator& link, clique& from, clique& to);
    void distribute_over(separator& link, clique& from, clique& to);
    void take_marginal(separator& link, clique& from);
    void take_retracted_marginal(const weighted_plan& plan, std::span<node* const> kept, clique& from);
    double divide_by_last(separator& link);
    void exchange_utilities(separator& link, const table_map& map, clique& to);
    void store_marginal(separator& link) noexcept;

    tree_context in_;
    q_equilibrium_t equilibrium_;
    q_mode_t mode_;
    clique& root_;
    std::span<double> marginal_;          // of the present message
    std::span<double> utilities_;         // alike
    std::vector<const double*> weights_;  // of nodes that are removed
};

// Collects from the active cliques to the root, or to the nearest that they have in common where it is null, and
// distributes from there. No clique is active afterwards.
void pass_messages(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode, clique* root);

// The weights of the nodes of a clique that are not kept, as out_sum_marginal() and its like take them.
void list_weights(const junction_forest& forest, const clique& from, std::span<node* const> kept,
                  std::vector<const double*>& weights);

// Makes the plans for marginals that weigh the nodes that they remove.
void plan_retraction(junction_forest& forest, junction_tree& tree);

}  // namespace quarn
