// The tables of a tree before there is evidence: multiplied together from the nodes' tables, or taken from a saved copy.
#pragma once

#include "scaling.h"

namespace quarn {

// Whether the policy of a decision stays out of the tables: it is when the decision has been made.
enum class policies { of_open_decisions, all };

// No evidence, no equilibrium; excluded nodes are as they are entered.
void reset_tree(const tree_context& in) noexcept;

// Multiplies the tables of the nodes into the cliques of a tree that was reset, after checking those that changed. Fails with
// q_error_invalid_probability_potential, or with q_error_inconsistency_or_underflow when excluded nodes contradict each
// other.
void fill_tables(const tree_context& in, policies taken);

// The first propagation of filled tables: sum equilibrium, without evidence.
void calibrate(const tree_context& in);

// The normalisation constant of a tree at sum equilibrium without evidence, to the bit where it is known beforehand.
void forget_rounding(junction_tree& tree) noexcept;

// Whether the saved copy of the tables is what fill_tables() and calibrate() would arrive at.
bool copy_is_current(const tree_context& in, policies taken) noexcept;
void restore_tables(const tree_context& in) noexcept;
// Keeps a copy of the tables, unless all tables of the domain together are too large or there is no memory.
bool may_save_tables(const junction_forest& forest) noexcept;
void save_tables(const tree_context& in) noexcept;

// All of it: sum equilibrium without evidence.
void restore_prior(const tree_context& in, policies taken);

}  // namespace quarn
