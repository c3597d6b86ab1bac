#include "state_numbers.h"

#include <numeric>

#include "errors.h"
#include "states.h"

namespace quarn {

double interval::middle() const noexcept {
    if (lower <= -infinite) return upper;
    return upper >= infinite ? lower : std::midpoint(lower, upper);
}

void require_state_numbers(const node& asked) {
    require(state_values_are_valid(asked), q_error_invalid_state_values);
    const std::vector<double>& values = asked.state_values;
    require(asked.subtype == q_subtype_number || values.front() > -interval::infinite ||
                values[1] < interval::infinite,
            q_error_invalid_state_values);
}

double state_number(const node& asked, std::size_t state) {
    require_state_numbers(asked);
    const std::vector<double>& values = asked.state_values;
    return asked.subtype == q_subtype_number ? values[state]
                                             : interval{values[state], values[state + 1]}.middle();
}

}  // namespace quarn
