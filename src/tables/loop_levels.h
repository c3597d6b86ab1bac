// The nested loops of one operation between a table and another one over some of its nodes, as plain data.
//
// There is one level for each node of the larger table. It has a count and the strides, in entries, with which a step
// moves through either table. A level that does not move the smaller table is over a node that the smaller one does not
// have: an operation sums or maximises over it, or uses one number of the smaller table for all of its steps.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "node.h"

namespace quarn {

struct loop_level {
    std::size_t count;
    std::size_t larger;   // stride
    std::size_t smaller;  // stride; 0: the level is not kept in the smaller table

    bool kept() const noexcept { return smaller != 0; }
    bool operator==(const loop_level&) const = default;
};

using loop_levels = std::vector<loop_level>;

// No state: the node is not fixed.
constexpr std::ptrdiff_t not_fixed = -1;

// Levels in the order of `nodes`, outermost first; `smaller` is a subset of them in any order. All are discrete.
loop_levels make_levels(std::span<node* const> nodes, std::span<node* const> smaller);

// Drops the level of each fixed node that the smaller table does not have; `fixed` gives a state or not_fixed for each
// level. Returns where the walk through the larger table now starts.
std::size_t simplify(loop_levels& levels, std::span<const std::ptrdiff_t> fixed);

// Whether the smaller table moves at the innermost level, so that the two tables are walked entry by entry and not a
// number of the smaller one used for a run of the larger one. Asked before compress(): a node of one state counts when
// the smaller table has it. Division has two rules for the two cases.
bool is_one_to_one(const loop_levels& levels) noexcept;

// Whether a step of the outer level is a whole round of the inner one, in both tables.
bool can_merge(const loop_level& outer, const loop_level& inner) noexcept;

// Drops levels of one step and merges neighbours that can be walked as one.
void compress(loop_levels& levels);

// The same loops with the kept levels first. Each part is compressed for itself.
struct sectioned_levels {
    loop_levels kept;
    loop_levels removed;

    bool operator==(const sectioned_levels&) const = default;
};
sectioned_levels by_section(const loop_levels& levels);

// Entries that the loops go through.
std::size_t steps(std::span<const loop_level> levels) noexcept;

}  // namespace quarn
