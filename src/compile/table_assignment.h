// The second half of compiling: a clique for every table and every belief, and room for the numbers.
#pragma once

#include "junction_forest.h"

namespace quarn {

// Gives nodes without a table their default one, which stays when this fails. Fails with q_error_no_memory when all
// tables together exceed the memory of the machine.
void assign_tables(domain& compiled, junction_forest& forest);

}  // namespace quarn
