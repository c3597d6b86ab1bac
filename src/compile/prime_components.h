// The pieces of a graph that complete separators divide it into.
#pragma once

#include "elimination.h"
#include "graph.h"

namespace quarn {

// The maximal prime subgraphs of a connected graph, from the cliques of a minimal triangulation of it.
std::vector<vertex_set> prime_components(const graph& connected, const clique_list& minimal_triangulation);

}  // namespace quarn
