// Expressions as text.
#pragma once

#include <string>

#include "expression.h"

namespace quarn {

// The text that is read as an equal tree, with as few parentheses as it takes. Gives names to the nodes that the tree
// refers to where they have none.
//
// A number that is negated cannot be told from one with the other sign, and is printed as that.
std::string print(const expression& tree);

}  // namespace quarn
