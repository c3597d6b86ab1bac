// How a triangulated graph falls apart along its minimal separators.
#pragma once

#include "elimination.h"
#include "graph.h"

namespace quarn {

struct split {
    vertex_set vertices;
    vertex_set separator;            // what all parts have in common, with no links between them beyond it
    std::vector<std::size_t> parts;  // their places in the list; none for a clique
};

// The connected graph with these maximal cliques comes first, each part after that which it is part of.
std::vector<split> make_split_tree(const clique_list& cliques, std::size_t vertex_count);

}  // namespace quarn
