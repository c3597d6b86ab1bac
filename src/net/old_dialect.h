// Reads networks in the older dialect of NET files, which is never written.
//
//   network -> NAME STRING NUMBER NUMBER NUMBER { node }      label, width and height of nodes, scale
//   node    -> NAME STRING NUMBER { NAME NUMBER } data        label, number of states; parents with theirs
//
// Tokens are those of the NET lexer. Nodes may be named as parents before they are defined.
#pragma once

#include <string_view>

#include "domain.h"
#include "net_reader.h"

namespace quarn {

// Whether a text begins with a name, a string and three numbers.
bool is_old_dialect(std::string_view source);
// Reads a whole text that does.
void parse_old_dialect(net_reader& in, domain& target);

}  // namespace quarn
