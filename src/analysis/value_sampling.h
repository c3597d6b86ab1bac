// Drawing continuous nodes from the distributions in a table.
#pragma once

#include <vector>

#include "random_generator.h"
#include "table.h"

namespace quarn {

class value_sampler {
public:
    // Draws those that one configuration of a table has distributions of, in their order, given the values of those that it
    // conditions on; a node to be left alone counts for nothing in the table. One value for each continuous node.
    void draw(const table& from, std::size_t configuration, std::span<double> values,
              random_generator& generator);

private:
    std::vector<double> block_, variances_;
};

}  // namespace quarn
