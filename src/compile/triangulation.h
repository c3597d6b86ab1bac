// The triangulation of a whole moral graph, piece by piece.
#pragma once

#include "elimination.h"
#include "graph.h"

namespace quarn {

// The cheapest result of the elimination heuristics by total clique weight; between equals the earlier heuristic.
clique_list triangulate_by_best_heuristic(const graph& connected);

// The cliques of one connected component after the other. The last clique of a component holds the vertex that was
// eliminated last.
clique_list triangulate(const graph& moral);

}  // namespace quarn
