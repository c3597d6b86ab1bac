// The continuous part of a strongly rooted tree [Lauritzen & Jensen 2001].
//
// The table of a clique holds the distribution of its continuous nodes given those that it shares with its parent, for
// each configuration of its discrete nodes; its weights belong to the messages of the discrete part. A clique that shares
// continuous nodes with its parent shares all its discrete nodes, so that evidence on discrete nodes touches weights only.
#pragma once

#include "scaling.h"

namespace quarn {

// Takes the table of a continuous node into the one of its clique.
void combine_moments(const tree_context& in, clique& target, const assigned_table& assigned);

// Given the product of the nodes' tables in every clique: the conditional distributions, as said above.
void collect_moments(const tree_context& in);

// Observes a continuous node, the weights being logarithms: adds the densities of the value to those of a clique where the
// node depends on no other one. Returns whether configurations became impossible, which the other cliques should be told
// before the next value. Fails as insert_head_evidence() does, the tables then being of no use.
bool observe(const tree_context& in, compiled_node& observed, double value);

// Works out means and variances of the continuous nodes, given the weights of all cliques.
void distribute_moments(const tree_context& in);

}  // namespace quarn
