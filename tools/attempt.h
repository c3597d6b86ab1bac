// Results of networks that perhaps have none.
#pragma once

#include <string>
#include <vector>

#include "beliefs.h"

namespace tool {

struct attempt {
    model_beliefs results;  // where there are none, the nodes and their evidence
    std::string problem{};  // why there are none; empty: there are
};

// The nodes and what is entered on them, without computing anything.
model_beliefs describe_all(const model& asked, const std::vector<q_node_t>& shown);

// Beliefs of nodes where the network can be computed. Fails as compute_beliefs() where it can, but not with the evidence.
attempt try_to_compute(model& asked, const std::vector<q_node_t>& shown);

}  // namespace tool
