// Node declarations of the NET language.
#pragma once

#include "net_reader.h"
#include "node.h"

namespace quarn {

// Reads a declaration after its keywords and creates the node.
void parse_node(net_reader& in, domain& target, q_category_t category, q_kind_t kind);

}  // namespace quarn
