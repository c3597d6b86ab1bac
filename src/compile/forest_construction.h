// From the cliques of a triangulation to a junction forest that propagation can work on.
#pragma once

#include <memory>

#include "elimination.h"
#include "junction_forest.h"

namespace quarn {

// Fails with q_error_size_too_large when the table of a clique is too large to be described; by then the cliques are in
// the log. Gives nodes without a table their default one. Changes nothing else in the domain.
std::unique_ptr<junction_forest> make_junction_forest(domain& source, const clique_list& cliques);

}  // namespace quarn
