// The triangulation of a whole moral graph, piece by piece.
#pragma once

#include "clique_tree.h"
#include "elimination.h"
#include "graph.h"
#include "quarn.h"
#include "triangulation_log.h"

namespace quarn {

// The cheapest result of the elimination heuristics by total clique weight; between equals the earlier heuristic.
elimination_result triangulate_by_best_heuristic(const graph& start);

// How to triangulate, and what the search by separators may use.
struct triangulation_request {
    q_triangulation_method_t method;
    std::size_t max_separators = 0;
    std::size_t max_separator_size = 0;  // 0: no limit
    bool is_in_initial_order = false;    // the vertices are numbered in an elimination order to start from
    bool covers_all_nodes = true;        // no node is excluded
};

struct triangulation {
    clique_list cliques;
    clique_forest tree;
    std::vector<vertex>
        order;  // an elimination order of the triangulated graph that needs no fill-in, continuous first
};

// Each prime component by itself.
triangulation triangulate_domain(const graph& moral, const triangulation_request& asked,
                                 triangulation_log& log);
// The whole graph in a given order.
triangulation triangulate_domain(const graph& moral, std::span<const vertex> order, triangulation_log& log);

}  // namespace quarn
