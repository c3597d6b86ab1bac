// The plan of one operation between a table and another one over some of its nodes: nested loops as plain data.
//
// The levels follow the node order of the larger table, outermost first. Each has a count and the strides, in entries,
// with which a step moves through either table; the smaller table's is 0 where it does not vary. A plan is made once
// and run many times.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "node.h"

namespace quarn {

struct loop_level {
    std::size_t count;
    std::size_t stride;         // in the larger table
    std::size_t source_stride;  // in the smaller table

    bool operator==(const loop_level&) const = default;
};

struct loop_plan {
    std::vector<loop_level> levels;  // never empty; neighbours that can be walked as one are merged

    bool operator==(const loop_plan&) const = default;
};

// The plan for a table over `nodes` and one over `source`, a subset of them in any order. All nodes are discrete.
loop_plan make_loop_plan(std::span<node* const> nodes, std::span<node* const> source);

}  // namespace quarn
