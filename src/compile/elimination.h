// Triangulation by eliminating vertices one by one, each time the cheapest.
#pragma once

#include "graph.h"

namespace quarn {

// What makes a vertex cheap: the clique that it forms with its neighbours, or the links that these lack.
enum class elimination_heuristic {
    clique_size = 15,
    clique_weight = 16,
    fill_in_size = 17,
    fill_in_weight = 18
};

constexpr bool uses_weights(elimination_heuristic heuristic) noexcept {
    return heuristic == elimination_heuristic::clique_weight ||
           heuristic == elimination_heuristic::fill_in_weight;
}

// The cliques of a triangulated graph, none of which lies in another one. The last one holds the vertex that was
// eliminated last.
using clique_list = std::vector<vertex_set>;

// No fill-in link can be left out, by itself, of the triangulated graph.
clique_list triangulate_by_elimination(const graph& start, elimination_heuristic heuristic);

}  // namespace quarn
