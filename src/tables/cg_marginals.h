// Marginals of tables with continuous nodes [Lauritzen & Jensen 2001].
//
// The roles of the target's continuous nodes say what is wanted: only heads get moments, everything else of the target's
// blocks is left as it is.
#pragma once

#include "cg_plan.h"

namespace quarn {

// Removes continuous nodes, which is exact. Both tables have the same discrete nodes. Weights are copied; a head gets its
// mean, its covariances with heads and its coefficients on tails.
void strong_marginal(const cg_plan& plan, const table& source, table& target, const workers& allowed = {});

// Removes discrete nodes, and continuous ones along with them: the mixture over their configurations becomes one
// distribution with the weight, the means and the covariances of the mixture. All nodes of the source that matter are
// heads. Configurations whose weight is not positive count for nothing; where all are such, the target's weight and
// moments are 0. Means that agree to about 13 digits are taken as equal.
void weak_marginal(const cg_plan& plan, const table& source, table& target, const workers& allowed = {});

}  // namespace quarn
