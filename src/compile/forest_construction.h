// From the cliques of a triangulation to a junction forest.
#pragma once

#include <memory>

#include "junction_forest.h"
#include "moral_graph.h"
#include "triangulation.h"

namespace quarn {

// Cliques, separators and trees, without tables. Fails with q_error_size_too_large when the table of a clique is too
// large to be described; by then the cliques are in the log. Changes nothing else in the domain.
std::unique_ptr<junction_forest> make_junction_forest(domain& source, const moral_graph& moral,
                                                      const triangulation& triangulated);

}  // namespace quarn
