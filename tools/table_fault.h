// What makes a table unusable.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "quarn.h"

namespace tool {

// " given " and the states of the parents in one of so many rows of a table; the last parent varies fastest. Empty without
// parents.
std::string condition_of(std::span<const q_node_t> parents, size_t row, size_t rows);

// What is wrong with the rows of the table of a node that hold no distribution or finite utility: the first ones. Functions
// have none.
std::vector<std::string> table_faults(q_node_t node, size_t limit);

// What is wrong with the first table, in the order of the nodes, that does not hold distributions or finite utilities;
// empty when all do.
std::string find_table_fault(const std::vector<q_node_t>& nodes);

}  // namespace tool
