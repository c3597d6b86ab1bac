// Compression: tables that leave out what cannot happen.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Takes the configurations that the distributions of the chance nodes rule out from the tables of cliques and separators,
// and brings all trees to sum equilibrium without evidence. Returns the memory of the tables, with the lists of what
// belongs to their entries, as a part of that before. Fails with q_error_usage, q_error_not_compiled,
// q_error_no_equilibrium, q_error_invalid_probability_potential, or, the trees having been brought to their results without
// evidence, with q_error_table_too_large or for lack of memory.
double compress(domain& compressed);

}  // namespace quarn
