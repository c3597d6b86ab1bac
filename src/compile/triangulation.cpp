// Triangulation by the best of several heuristics, each connected component by itself.
//
//   Maps     undirected graph -> maximal cliques of a triangulation
//   Method   no heuristic is the best one everywhere, and all of them are fast [Kjaerulff 1990]
#include "triangulation.h"

#include <numeric>

#include "clique_weight.h"

namespace quarn {
namespace {

clique_list triangulate_component(const graph& component) {
    if (!is_complete(component)) return triangulate_by_best_heuristic(component);
    vertex_set all(component.vertex_count());
    std::iota(all.begin(), all.end(), vertex{0});
    return {all};
}

}  // namespace

clique_list triangulate_by_best_heuristic(const graph& connected) {
    using enum elimination_heuristic;
    clique_list best = triangulate_by_elimination(connected, clique_size);
    double best_weight = total_weight_of(connected, best);
    const bool weights_matter = weights_differ_from_sizes(connected);
    for (const elimination_heuristic heuristic : {clique_weight, fill_in_size, fill_in_weight}) {
        if (uses_weights(heuristic) && !weights_matter) continue;
        clique_list tried = triangulate_by_elimination(connected, heuristic);
        const double weight = total_weight_of(connected, tried);
        if (weight >= best_weight) continue;
        best = std::move(tried);
        best_weight = weight;
    }
    return best;
}

clique_list triangulate(const graph& moral) {
    clique_list cliques;
    graph_pieces pieces(moral);
    for (const vertex_set& component : connected_components(moral))
        for (vertex_set& clique : triangulate_component(pieces.induced_by(component))) {
            for (vertex& member : clique) member = component[member];
            cliques.push_back(std::move(clique));
        }
    return cliques;
}

}  // namespace quarn
