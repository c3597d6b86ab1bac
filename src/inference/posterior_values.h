// What the nodes of a propagated domain stand for in expressions.
#pragma once

#include <optional>

#include "evaluation.h"

namespace quarn {

// Whether a node with a kind is excluded, or a utility depends on excluded nodes only: then it may be in any tree, and is
// known without it.
bool is_settled(const node& asked) noexcept;

// Reads results. Besides q_error_computation_failed these fail as the functions in results.h do; a function without a
// value gives the code that says why.
class posterior_values : public node_values {
public:
    value value_of(const node& referred) const override;
    std::size_t state_of(const node& discrete) const override;
    double variance_of(const node& numeric) const override;
    double quantile_of(const node& numeric, double level) const override;
    // Of the condition, over the states of the one discrete node in it that is in no certain state.
    double probability_of(const expression& condition) const override;
};

}  // namespace quarn
