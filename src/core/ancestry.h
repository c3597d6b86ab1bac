// Walks along the links: ancestors, descendants, and the test for directed cycles.
#pragma once

#include "node.h"

namespace quarn {

// The node and its ancestors or descendants, breadth first, in the node's own scratch list.
const node_list& ancestors(node& start);
const node_list& descendants(node& start);

// Whether a link between two nodes would close a directed cycle.
bool link_closes_cycle(node& child, node& parent);

}  // namespace quarn
