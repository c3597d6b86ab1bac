// Walks along the links: ancestors, descendants, and the test for directed cycles.
#pragma once

#include <functional>
#include <span>

#include "node.h"

namespace quarn {

// The node and its ancestors or descendants, breadth first, in the node's own scratch list.
const node_list& ancestors(node& start);
const node_list& descendants(node& start);

// Whether a node that is sought is among those at the start or beyond them, going from node to node along these links. A
// chain component counts as one node.
bool leads_to(std::span<node* const> start, node_list node::*neighbours,
              const std::function<bool(const node&)>& is_sought);

// Whether a link between two nodes would close a directed cycle, a chain component counting as one node.
bool link_closes_cycle(node& child, node& parent);

}  // namespace quarn
