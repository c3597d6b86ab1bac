#include "total_weight_triangulation.h"

#include "clique_weight.h"
#include "total_weight_search.h"

namespace quarn {

clique_list triangulate_by_total_weight(const graph& piece, const vertex_set& component,
                                        const triangulation_request& asked, triangulation_log& log) {
    std::vector<clique_list> known;
    if (asked.is_in_initial_order)
        known.push_back(triangulate_in_order(piece, first_vertices(piece.vertex_count())).cliques);
    known.push_back(triangulate_by_best_heuristic(piece).cliques);
    const search_limits limits{asked.max_separators, asked.max_separator_size};
    search_result found = search_total_weight(piece, limits, known);
    log.search(piece, component, limits, known, found);
    return std::move(found.cliques);
}

}  // namespace quarn
