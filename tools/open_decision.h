// Evidence that supposes a decision to be made.
#pragma once

#include <string>
#include <vector>

#include "quarn.h"

namespace tool {

// Which of the decisions among the nodes has a likelihood, or is open while evidence on another node can depend on it;
// empty when there is none.
std::string find_open_decision(const std::vector<q_node_t>& nodes);

}  // namespace tool
