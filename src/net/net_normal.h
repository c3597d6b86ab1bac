// Normal distributions of continuous nodes in the NET language.
#pragma once

#include "net_reader.h"
#include "table.h"

namespace quarn {

// Reads the own table of a continuous node: a distribution for each configuration of its discrete parents.
void parse_normals(net_reader& in, table& described);

}  // namespace quarn
