// Triangulation with the least total weight of the cliques, by search.
#pragma once

#include "elimination.h"
#include "graph.h"
#include "minimal_separators.h"

namespace quarn {

struct search_result {
    clique_list cliques;
    double weight = 0;
    std::size_t separators_found = 0;
    bool found_all = false;           // minimal separators of the graph
    bool were_large_ones = false;     // that were ignored
    std::size_t separators_kept = 0;  // for triangulation
    std::size_t pieces = 0;           // of the graph that triangulations were put together from
    // No minimal triangulation weighs less. Others may, by a little, when there are vertices with one state or three
    // continuous ones.
    bool is_optimal = false;
};

// Gives the first of the lightest known triangulations unless it finds a lighter one.
search_result search_total_weight(const graph& connected, const search_limits& limits,
                                  std::span<const clique_list> known);

}  // namespace quarn
