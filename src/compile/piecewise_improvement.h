// Improving a triangulation piece by piece.
#pragma once

#include <functional>

#include "elimination.h"
#include "graph.h"
#include "vertex_bits.h"

namespace quarn {

// Replaces a triangulation of a piece by a better one when it finds one.
using piece_improver = std::function<void(const graph& piece, clique_list& cliques)>;

// Takes neighbouring cliques of the clique tree together and improves the piece that they form, until nothing gets
// better or the work, some of which the improver spends, is over.
void improve_pieces(const graph& connected, clique_list& cliques, search_work& work,
                    const piece_improver& improve);

}  // namespace quarn
