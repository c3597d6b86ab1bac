// The numbers that the states of numbered and interval nodes stand for.
#pragma once

#include <limits>

#include "node.h"

namespace quarn {

// What an interval node can be in: bounds at the largest finite doubles, or beyond, reach to infinity.
struct interval {
    static constexpr double infinite = std::numeric_limits<double>::max();

    double lower, upper;

    bool is_finite() const noexcept { return lower > -infinite && upper < infinite; }
    // The finite bound of one that reaches to infinity.
    double middle() const noexcept;
};

// Fails with q_error_invalid_state_values when values are not set or do not increase as they must, or the only interval
// has no finite bound.
void require_state_numbers(const node& asked);

// The value of a state, or the middle of its interval. Fails as require_state_numbers does.
double state_number(const node& asked, std::size_t state);

}  // namespace quarn
