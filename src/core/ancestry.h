// Walks along the links: ancestors, descendants, and the test for directed cycles.
#pragma once

#include <span>

#include "node.h"

namespace quarn {

// The node and its ancestors or descendants, breadth first, in the node's own scratch list.
const node_list& ancestors(node& start);
const node_list& descendants(node& start);

// Whether one of a group of nodes is in the start or above it, a chain component counting as one node. The group is not
// empty and has all members of a component or none.
bool is_above(std::span<node* const> group, std::span<node* const> start);

// Whether a link between two nodes would close a directed cycle, a chain component counting as one node.
bool link_closes_cycle(node& child, node& parent);

}  // namespace quarn
