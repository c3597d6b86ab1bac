// Mean and variance of a numbered or interval node over the values of its states.
#pragma once

#include <optional>
#include <span>

#include "node.h"

namespace quarn {

struct mean_and_variance {
    double mean;
    double variance;
};

// Numbered nodes: of the values of their states. Interval nodes: each state is spread evenly over its interval, or lies
// at the finite bound of one that reaches to infinity. Fails with q_error_invalid_state_values when values are not set
// or do not increase as they must, or the only interval has no finite bound.
mean_and_variance numeric_moments(const node& with_values, std::span<const double> beliefs);

// The value that, as probabilities go, so much of a numbered or interval node lies below; of an interval to infinity its
// finite bound. Fails as numeric_moments().
double numeric_quantile(const node& with_values, std::span<const double> beliefs, double level);

// The only state with a positive belief, if there is one.
std::optional<std::size_t> certain_state(std::span<const double> beliefs) noexcept;

}  // namespace quarn
