// Which nodes of a network have numbers of their own, and which only what is taken in their place.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "model.h"

namespace tool {

// The names of the nodes that have a table; true for those that share one. Nothing where that cannot be told.
using described_nodes = std::optional<std::unordered_map<std::string, bool>>;

// To be called before tables are asked for, which makes those that are missing.
described_nodes find_described(q_domain_t domain);

// Whether a node has no numbers but those of potential data, so that it should have some.
bool needs_data(q_node_t node);

// Tells, on standard error, of nodes whose model makes no table, so that all their states are alike or their utility is 0.
// To be called before tables are asked for.
void warn_of_models_without_data(const model& asked);

}  // namespace tool
