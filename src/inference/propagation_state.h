// What the junction trees of a compiled domain know of their last propagation. A domain is answered for by all its trees.
#pragma once

#include "junction_forest.h"

namespace quarn {

// All of these fail with q_error_not_compiled.
bool has_evidence_to_propagate(const domain& asked);
bool has_evidence_to_propagate(const junction_tree& asked);

using tree_flag = bool junction_tree::*;
bool any_tree_has(const domain& asked, tree_flag wanted);
bool tree_has(const junction_tree& asked, tree_flag wanted);

// Fail with q_error_usage for anything but the two equilibria.
bool equilibrium_is(const domain& asked, q_equilibrium_t wanted);
bool equilibrium_is(const junction_tree& asked, q_equilibrium_t wanted);

// Whether evidence is propagated in that mode, if any. Fail with q_error_usage and q_error_no_equilibrium.
bool evidence_mode_is(const domain& asked, q_mode_t wanted);
bool evidence_mode_is(const junction_tree& asked, q_mode_t wanted);

}  // namespace quarn
