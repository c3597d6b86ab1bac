// New evidence on top of that which the tables hold already.
#pragma once

#include "log_weights.h"
#include "scaling.h"

namespace quarn {

// Whether the tables can take in the entered evidence: nothing that they hold is given up but likelihoods without zeros.
bool extends_propagated(const junction_forest& forest, const junction_tree& tree) noexcept;

// Whether decisions were made or opened, so that the policies in the tables are not the right ones.
bool decisions_changed(const junction_forest& forest, const junction_tree& tree) noexcept;

// Takes the entered evidence on discrete nodes over as propagated and marks the cliques active that have something new to
// tell. In normal mode it is multiplied into these, divided by what was there; fails with
// q_error_inconsistency_or_underflow when nothing is left. In fast retraction mode the messages take it along.
void absorb_findings(const tree_context& in, q_mode_t mode);

// The same in normal mode, into weights that are logarithms; nothing is lost, and nothing marked.
void absorb_findings_as_logarithms(const tree_context& in);

// Observes the values entered on continuous nodes, the weights of all cliques being right; marks all cliques active when
// they are not any more. Fails as observe() does.
void absorb_values(const tree_context& in);
// The same where the weights are logarithms, and stay so.
void absorb_values(const tree_context& in, log_weights& weights);

}  // namespace quarn
