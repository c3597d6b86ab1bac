// Which nodes of a chain graph are joined.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "model.h"

namespace tool {

// The names of each two nodes that are joined by an undirected link.
std::vector<std::pair<std::string, std::string>> undirected_links(q_domain_t domain);

}  // namespace tool
