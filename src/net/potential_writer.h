// Potentials as NET text: links, models, and the tables of nodes and of chain components.
#pragma once

#include <string>

#include "chain_component.h"
#include "node.h"

namespace quarn {

// The potential of a node alone; nothing where it would say nothing. All nodes of the domain must have names.
void write_potential(std::string& to, node& child);

// A potential that members of a component share.
void write_potential(std::string& to, const chain_component& component, const table& shared);

}  // namespace quarn
