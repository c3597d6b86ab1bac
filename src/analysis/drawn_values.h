// What the nodes stand for in the configuration that was drawn.
#pragma once

#include <vector>

#include "node.h"

namespace quarn {

// The real-valued functions of a domain, each after those that it depends on.
std::vector<node*> functions_in_order(const domain& asked);

// Given the states and values that were drawn, and for functions the utilities and the functions before.
void set_drawn_utility(node& utility) noexcept;
void set_drawn_value(node& function) noexcept;  // or why it has none

// Fail with q_error_usage for a node of another sort, and where no configuration is drawn.
std::size_t drawn_state(const node& discrete);
double drawn_utility(const node& utility);
// Of a continuous node or a real-valued function. Fails also with what keeps the function from having a value.
double drawn_value(const node& asked);

}  // namespace quarn
