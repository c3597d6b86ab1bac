// Turning heads of a table into tails, the complement of a marginal: from the joint distribution of (H, Q) given T to
// that of H given Q and T [Lauritzen & Jensen 2001]. What the table held of Q itself is given up; the strong marginal
// taken before has it, and the two combined are the table again. Reversing an arc is combining, then conditioning
// [Cowell 2005].
//
// No matrix is inverted: one head after the other becomes a tail, that with the largest remaining share of its variance
// first. One whose variance is explained by the others, up to rounding, gets coefficients of 0; so linear relations
// without noise need no care.
#pragma once

#include <span>

#include "table.h"
#include "workers.h"

namespace quarn {

// Makes tails of the heads at these positions. The weights stay.
void condition_on(table& changed, std::span<const std::size_t> positions, const workers& allowed = {});

// The same for one block of moments. The roles are those before; `variances` is room for one number per node.
void condition_block(double* block, std::span<const cg_role> roles, std::span<const std::size_t> positions,
                     double* variances) noexcept;

}  // namespace quarn
