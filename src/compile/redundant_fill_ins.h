// Taking fill-in links that are not needed back out of a triangulated graph.
#pragma once

#include "elimination.h"
#include "graph.h"

namespace quarn {

// Removes fill-in links, one after the other, as long as the graph stays triangulated, and adjusts its maximal cliques:
// a clique is replaced by the larger one of its parts or by both, the second one at the end of the list. Returns the
// links in the order in which they were removed.
std::vector<edge> remove_redundant_fill_ins(clique_list& cliques, std::vector<edge> fill_ins,
                                            std::size_t vertex_count);

}  // namespace quarn
