// Taking the observed value of a continuous node into one table. The node then is one of which the table holds no
// information, and its entries are 0.
#pragma once

#include "table.h"
#include "workers.h"

namespace quarn {

// The node is a tail: the value is put into the regressions on it.
void insert_tail_evidence(table& changed, std::size_t position, double value, const workers& allowed = {});

// The node is a head that depends on no tail, and the table holds logarithms of weights. The logarithm of the density of
// the value, less that of the constant factor 1 / sqrt(2 pi), is added to each. The other heads are conditioned on the value.
//
// Fails, the table unchanged, with q_error_inconsistency_or_underflow when no configuration is possible, with
// q_error_zero_variance when a possible one has no variance and its mean is the value, and with q_error_low_density when
// none has a density above 0. Where there is no variance and the mean is another value, the logarithm becomes minus infinity.
void insert_head_evidence(table& changed, std::size_t position, double value, const workers& allowed = {});

}  // namespace quarn
