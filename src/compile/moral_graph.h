// The moral graph of a domain [Lauritzen & Spiegelhalter 1988]: its vertices are the nodes with a kind, in creation
// order; nodes are linked when they occur together in the table of some node.
#pragma once

#include "domain.h"
#include "graph.h"

namespace quarn {

// Numbers the vertices (q_node::vertex) and logs the links between parents of a common child.
graph make_moral_graph(domain& source);

}  // namespace quarn
