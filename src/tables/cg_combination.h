// The product of two tables with continuous nodes [Lauritzen & Jensen 2001]: weights are multiplied, and the joint
// distribution of the heads of both, given the tails that are no heads, is put together.
//
// Where one table can come first as a whole (none of its tails is a head of the other) that is one step. Where each has
// heads that depend on the other's, both are taken apart: in turns those heads are moved that depend on nothing that is
// still to come, each piece as its distribution given the pieces of its table before it.
#pragma once

#include "cg_plan.h"

namespace quarn {

// Multiplies the target by a source over some of its nodes. No node may be a head of both. Fails with q_error_usage, the
// target as it was, when there are common heads or the heads depend on each other in a circle.
void cg_combine(const cg_plan& plan, table& target, const table& source, const workers& allowed = {});

}  // namespace quarn
