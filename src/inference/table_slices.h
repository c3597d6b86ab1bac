// Tables over excluded nodes: cut out for the states in which these are observed.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Whether some table of the tree was last cut out for other states than are entered now, or has to be for the first time.
bool has_stale_slice(const junction_forest& forest, const junction_tree& tree) noexcept;

// Makes sure that the numbers of an assigned table are those for the entered states. Fails with q_error_invalid_evidence
// when an excluded node is not instantiated.
void update_slice(const junction_forest& forest, assigned_table& assigned);

// Writes a slice that was changed back into the table that it is cut out of.
void store_slice(const junction_forest& forest, const assigned_table& assigned);

// What is left of the table of an excluded node that has no home: one number.
double remaining_number(const junction_forest& forest, compiled_node& excluded);

}  // namespace quarn
