// What the columns of a table of cases mean for a network.
#pragma once

#include <string>
#include <vector>

#include "case_rows.h"
#include "model.h"

namespace tool {

struct case_columns {
    struct evidence_column {
        size_t column;
        std::string node;
    };

    std::vector<size_t> kept;               // in the order that was asked for
    std::vector<evidence_column> evidence;  // what is observed of nodes
    std::vector<std::string> unused;  // the nodes that are computed, so that nothing is observed of them
    size_t count;                     // of all columns
};

// Fails where a column is there twice, or is neither a node nor kept, or one that is to be kept is not there.
case_columns find_columns(const case_rows& cases, const model& asked, const std::vector<std::string>& kept);

}  // namespace tool
