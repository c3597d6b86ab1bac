// What can be read after a propagation. A node that is linked to another has the results of that one.
#pragma once

#include "junction_forest.h"
#include "numeric_moments.h"

namespace quarn {

// Whether the beliefs in the states of a node are probabilities given all the evidence. Fails as the functions below.
bool holds_posteriors(const node& asked);

// The forest of a domain that was propagated. Fails with q_error_not_compiled or q_error_no_equilibrium.
const junction_forest& propagated_forest(const domain& asked);

// Of one node: fail with q_error_usage for one of another sort (or state), with q_error_not_compiled, or with
// q_error_no_equilibrium when its junction tree is at none.
double belief(const node& asked, std::size_t state);
std::span<const double> beliefs_of(const node& discrete);
mean_and_variance continuous_moments(const node& asked);
// As numeric_moments(); q_error_usage also when what was propagated are no posteriors.
mean_and_variance numeric_marginal(const node& asked);
double function_value(const node& asked);  // of a real-valued function
const compiled_utility& utility_results(const node& asked);

// Of a state of a discrete node, which 0 stands for in a utility node; of all utility nodes together. Where there are no
// utilities: 0, or q_error_usage when what was propagated are no posteriors.
double expected_utility(const node& asked, std::size_t state);
double expected_utility(const domain& asked);

// Fail with q_error_not_compiled or q_error_no_equilibrium.
double normalization_constant(const domain& asked);
double log_normalization_constant(const domain& asked);

}  // namespace quarn
