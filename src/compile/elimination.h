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

// The maximal cliques of a triangulated graph.
using clique_list = std::vector<vertex_set>;

// A triangulated graph and how it came about. No fill-in link can be left out of it by itself.
struct elimination_result {
    clique_list cliques;        // the last one holds the vertex that was eliminated last
    std::vector<vertex> order;  // in which the vertices were eliminated
    std::vector<edge> fill_ins;
    std::vector<std::size_t>
        fill_in_ends;           // for each vertex of the order, how many there were after its step
    std::vector<edge> removed;  // fill-in links that turned out redundant
};

// Continuous vertices are eliminated before discrete ones.
elimination_result triangulate_by_elimination(const graph& start, elimination_heuristic heuristic);
// In a given order of all vertices.
elimination_result triangulate_in_order(const graph& start, std::span<const vertex> order);

}  // namespace quarn
