// The order in which decisions are optimised.
#pragma once

#include <vector>

#include "node.h"

namespace quarn {

// All decisions, each after those among its descendants, which come later in time. Where the order in time is not settled,
// the earlier created one stands for the earlier one.
std::vector<node*> order_decisions(domain& asked);

}  // namespace quarn
