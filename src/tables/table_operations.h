// Operations between a table and a smaller one over some of its nodes, by a loop plan made for the pair.
//
// Each may be spread over threads, as far as it is allowed. The results are the same to the bit for any number of them:
// a plan fixes in which order the entries that belong together are taken. Those with more than one thread can fail with
// std::bad_alloc, and then have done nothing.
#pragma once

#include <span>

#include "loop_plan.h"
#include "workers.h"

namespace quarn {

// --- Changing the larger table, entry by entry, by the entry of the smaller one that belongs to it.

void multiply(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed = {});

// An entry stays as it is when its divisor is exactly 0; when the tables are walked entry by entry, or the divisor is a
// single number, it stays whenever its divisor is not greater than 0, NaN included.
void divide(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed = {});

void add(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed = {});

// Copies the smaller table: into another order of its nodes, and once for each state of the nodes that it lacks.
void expand(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed = {});

// --- Reducing the larger table into the smaller one. The smaller one may have its nodes in any order, and its old
// contents do not matter.

void sum_marginal(const loop_plan& plan, const double* larger, double* smaller, const workers& allowed = {});

// The first entry stays until a strictly greater one comes: of equal entries the earliest is taken, a NaN that comes
// first stays, and later ones are passed over.
void max_marginal(const loop_plan& plan, const double* larger, double* smaller, const workers& allowed = {});

// Marginals of the larger table times a weight for each state of each node that is removed, without building that
// product. `weights` has an entry for each of these nodes, in their order in the larger table: its weights, or null when
// all are 1.
using state_weights = std::span<const double* const>;
void out_sum_marginal(const weighted_plan& plan, const double* larger, state_weights weights, double* smaller,
                      const workers& allowed = {});
void out_max_marginal(const weighted_plan& plan, const double* larger, state_weights weights, double* smaller,
                      const workers& allowed = {});

// The marginal of a pair of a probability and a utility table of the same shape [Lauritzen & Nilsson 2001]: the summed
// probability, and the mean of the utility in it. Where the probability is 0, so is the utility.
void pair_marginal(const loop_plan& plan, const double* probability, const double* utility,
                   double* smaller_probability, double* smaller_utility, const workers& allowed = {});

}  // namespace quarn
