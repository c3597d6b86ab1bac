// The plan of one operation between a table and another one over some of its nodes. A plan is made once and run many
// times; it holds no pointers into the tables.
//
// The innermost levels form a tile, the part of the work that one call of a kernel does; the levels outside are walked
// step by step. What the tile looks like decides which kernel runs:
//
//   rows       the smaller table stays at one entry while a run of the larger one is passed
//   columns    both tables run along, entry by entry; further runs of the larger one may follow over the same entries
//   crossed    the tables store two nodes in opposite orders
//   scattered  a few short levels, which would cost more to walk than to work on: their positions are listed
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "loop_levels.h"

namespace quarn {

enum class tile_kind : unsigned char { rows, columns, crossed, scattered };

// The most steps that a list of positions has.
constexpr std::size_t largest_list = 256;

struct tile_position {
    std::size_t larger;
    std::size_t smaller;

    bool operator==(const tile_position&) const = default;
};

// Each entry of the smaller table that a tile meets, with all entries of the larger one that belong to it, makes
// `kept` times `removed` entries. A level that is absent has one step.
struct loop_tile {
    tile_kind kind = tile_kind::scattered;
    loop_level kept{1, 0, 0};
    loop_level removed{1, 0, 0};                 // crossed: the second kept level
    std::vector<tile_position> kept_positions;   // scattered only, one for each kept step
    std::vector<std::size_t> removed_positions;  // scattered only, in the larger table

    bool operator==(const loop_tile&) const = default;
};

struct loop_plan {
    loop_levels outer;  // outermost first
    loop_tile tile;
    std::size_t start = 0;         // in the larger table
    std::size_t larger_size = 1;   // entries of the larger table that are walked
    std::size_t smaller_size = 1;  // entries of the smaller table
    bool one_to_one = false;       // see is_one_to_one()

    bool operator==(const loop_plan&) const = default;
};

// The plan for a table over `nodes` and one over `smaller`, a subset of them in any order; all are discrete. Where
// `fixed` gives a state for a node (see simplify), only that state is walked.
loop_plan make_loop_plan(std::span<node* const> nodes, std::span<node* const> smaller,
                         std::span<const std::ptrdiff_t> fixed = {});

// A plan in which every node that the smaller table does not have keeps a level of its own, to give each of its states
// a weight. Those nodes are numbered in their order in the larger table.
struct removed_node {
    std::size_t number;
    std::size_t states;

    bool operator==(const removed_node&) const = default;
};
struct weighted_plan {
    loop_plan loops;
    std::vector<removed_node> outer_nodes;  // one for each removed level outside the tile, outermost first
    std::vector<removed_node> tile_nodes;   // the same in the tile
    std::vector<removed_node> one_state_nodes;  // these have no level

    bool operator==(const weighted_plan&) const = default;
};
weighted_plan make_weighted_plan(std::span<node* const> nodes, std::span<node* const> smaller);

}  // namespace quarn
