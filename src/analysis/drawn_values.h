// What the nodes stand for in the configuration that was drawn.
#pragma once

#include "evaluation.h"

namespace quarn {

// Fail with q_error_usage for a node of another sort, and where no configuration is drawn.
std::size_t drawn_state(const node& discrete);
double drawn_utility(const node& utility);
// Of a continuous node or a real-valued function; what keeps a function from having a value is the code of the failure.
double drawn_value(const node& asked);

}  // namespace quarn
