// What makes a table of probabilities unusable.
#pragma once

#include <string>
#include <vector>

#include "quarn.h"

namespace tool {

// What is wrong with the first table, in the order of the nodes, that cannot be divided into distributions; empty when
// all can.
std::string find_table_fault(const std::vector<q_node_t>& nodes);

}  // namespace tool
