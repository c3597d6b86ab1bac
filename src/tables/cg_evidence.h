// Taking the observed value of a continuous node into one table. The node then is one of which the table holds no
// information, and its entries are 0.
#pragma once

#include "table.h"
#include "workers.h"

namespace quarn {

// The node is a tail: the value is put into the regressions on it.
void insert_tail_evidence(table& changed, std::size_t position, double value, const workers& allowed = {});

// The node is a head that depends on no tail. Each weight is multiplied by the density of the value, all of them divided
// by exp(result), where the result is the logarithm of the largest of these products (without the factor
// 1 / sqrt(2 pi) of the density). The other heads are conditioned on the value.
//
// Fails, the table unchanged, with q_error_inconsistency_or_underflow when no weight is positive, with
// q_error_zero_variance when a configuration of positive weight has no variance and its mean is the value, and with
// q_error_low_density when no configuration has a density above 0. Where there is no variance and the mean is another
// value the weight becomes 0.
double insert_head_evidence(table& changed, std::size_t position, double value, const workers& allowed = {});

}  // namespace quarn
