// Evidence as it is written on the command line: NODE=STATE, NODE=#INDEX or NODE=(WEIGHT WEIGHT ...); NODE=VALUE for a
// continuous node.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model.h"

namespace tool {

struct evidence {
    std::string node;
    std::string finding;  // as a finding_reader takes it
};

// Fail with usage_failure: an argument in another form, or two for the same node.
std::vector<evidence> parse_evidence(const std::vector<std::string>& arguments);

// Enters evidence into a model that must have the node, and it such states or values.
void enter_evidence(const model& target, const evidence& entered);
// Enters the evidence of a case file, where there is one, and then more, which replaces that of the file on the same nodes.
void enter_evidence(const model& target, const std::optional<std::string>& case_file,
                    const std::vector<evidence>& entered);

}  // namespace tool
