// The moral graph of a domain.
#pragma once

#include <span>

#include "domain.h"
#include "graph.h"

namespace quarn {

struct moral_graph {
    graph links;
    std::vector<node*> nodes;  // of the vertices
};

// One vertex for each node with a kind that is not excluded, in creation order, or in the given one, which has all of
// them; sets q_node::vertex. Writes the marriages and the necessary fill-ins to the log of the domain.
moral_graph make_moral_graph(domain& source, std::span<node* const> order = {});

}  // namespace quarn
