// Potential maximal cliques: the sets that are maximal cliques of some minimal triangulation.
#pragma once

#include "vertex_bits.h"

namespace quarn {

// Those that weigh less than a bound, found from minimal separators. All of them when all minimal separators are given
// and the work does not end before.
set_table find_potential_maximal_cliques(const bit_graph& connected, const set_table& separators,
                                         double bound, search_work& work);

}  // namespace quarn
