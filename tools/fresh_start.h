// Results that do not depend on what was computed before.
#pragma once

#include <vector>

#include "model.h"

namespace tool {

// Likelihoods that are taken back leave rounding errors in the tables of a domain. Evidence that excludes something does
// not: when it is taken back propagation starts again from the tables without evidence. So a little of that is entered
// and taken back, in each junction tree.
class fresh_start {
public:
    // Of a compiled model that has been propagated without evidence.
    explicit fresh_start(const model& asked);

    // Takes all evidence back, and propagates that.
    void make() const;

private:
    struct chosen_evidence {
        q_node_t node;
        size_t state;  // the most probable one
        double value;  // of a continuous node
    };

    const model& asked_;
    std::vector<chosen_evidence> excluding_;
};

}  // namespace tool
