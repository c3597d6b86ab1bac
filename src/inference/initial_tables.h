// The tables of a tree before there is evidence: multiplied together from the nodes' tables, or taken from a saved copy.
#pragma once

#include "scaling.h"

namespace quarn {

// Which decisions have their policies in the tables. Those that are made need none.
enum class policies { none, of_open_decisions, all };

// No evidence, no equilibrium; excluded nodes are as they are entered.
void reset_tree(const tree_context& in) noexcept;

// How the weights of cliques are held meanwhile.
enum class number_scale { linear, logarithmic };

// Multiplies the tables of the nodes into the cliques of a tree that was reset, after checking those that changed. Fails with
// q_error_invalid_probability_potential, or with q_error_inconsistency_or_underflow when excluded nodes contradict each
// other.
void fill_tables(const tree_context& in, policies taken, number_scale scale = number_scale::linear);

// The first propagation of filled tables: sum equilibrium, without evidence.
void calibrate(const tree_context& in);

// The normalisation constant of a tree at sum equilibrium without evidence, to the bit where it is known beforehand.
void forget_rounding(junction_tree& tree) noexcept;

// Whether the saved copy of the tables is what fill_tables() and calibrate() would arrive at.
bool copy_is_current(const tree_context& in, policies taken) noexcept;
void restore_tables(const tree_context& in) noexcept;
// Keeps a copy of the tables, unless all tables of the domain together are too large or there is no memory.
bool may_save_tables(junction_forest& forest) noexcept;
void save_tables(const tree_context& in) noexcept;

// All of it: sum equilibrium without evidence.
void restore_prior(const tree_context& in, policies taken);

}  // namespace quarn
