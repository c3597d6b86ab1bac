// Evidence as it is written on the command line: NODE=STATE, NODE=#INDEX or NODE=(WEIGHT WEIGHT ...).
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace tool {

struct evidence {
    std::string node;
    std::string state;
    std::vector<double> weights;  // instead of a state, unless empty
};

// Fail with usage_failure: an argument in another form, or two for the same node.
std::vector<evidence> parse_evidence(const std::vector<std::string>& arguments);

// Enters evidence into a model that must have the nodes and states.
void enter_evidence(const model& target, const evidence& entered);

}  // namespace tool
