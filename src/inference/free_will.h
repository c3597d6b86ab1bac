// What a decision can know: a choice that is still free cannot have had effects that were observed.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Fails with q_error_invalid_evidence when a decision of the tree has a likelihood, or when one of several choices is not
// made yet and evidence is entered on a node that it influences by way of chance nodes.
void require_free_will(const domain& propagated, const junction_tree& tree);

}  // namespace quarn
