// The links that a moral graph with continuous nodes needs in any triangulation.
#pragma once

#include "moral_graph.h"

namespace quarn {

// Links all discrete neighbours of each connected set of continuous vertices to each other, so that no triangulation has
// to eliminate a discrete vertex before a continuous one. Written to the log when the domain has nodes of both kinds.
// Fails with q_error_size_too_large when thousands would have to be linked.
void add_necessary_fill_ins(moral_graph& changed, domain& source);

}  // namespace quarn
