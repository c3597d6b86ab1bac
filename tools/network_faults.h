// What is wrong with a network that could be read, or may be meant otherwise.
#pragma once

#include <string>
#include <vector>

#include "quarn.h"

namespace tool {

// In the order of the nodes. Nobody must have asked for tables yet.
std::vector<std::string> find_network_faults(q_domain_t domain);

}  // namespace tool
