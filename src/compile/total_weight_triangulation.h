// Triangulation by search for the least total weight, with its trace.
#pragma once

#include "triangulation.h"

namespace quarn {

// The cliques of the best triangulation found of a prime component; `component` are its vertices in the whole graph.
clique_list triangulate_by_total_weight(const graph& piece, const vertex_set& component,
                                        const triangulation_request& asked, triangulation_log& log);

}  // namespace quarn
