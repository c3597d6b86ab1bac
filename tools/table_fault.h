// What makes a table unusable.
#pragma once

#include <string>
#include <vector>

#include "quarn.h"

namespace tool {

// What is wrong with the first table, in the order of the nodes, that does not hold distributions or finite utilities;
// empty when all do.
std::string find_table_fault(const std::vector<q_node_t>& nodes);

}  // namespace tool
