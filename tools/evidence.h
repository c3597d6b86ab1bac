// Evidence as it is written on the command line: NODE=STATE, NODE=#INDEX or NODE=(WEIGHT WEIGHT ...); NODE=VALUE for a
// continuous node.
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace tool {

struct evidence {
    std::string node;
    std::string state;            // or value
    std::vector<double> weights;  // instead of it, unless empty
};

// Fail with usage_failure: an argument in another form, or two for the same node.
std::vector<evidence> parse_evidence(const std::vector<std::string>& arguments);

// Enters evidence into a model that must have the node, and it such states or values.
void enter_evidence(const model& target, const evidence& entered);

}  // namespace tool
