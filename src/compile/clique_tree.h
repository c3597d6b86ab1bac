// Joining the cliques of a triangulated graph into trees.
#pragma once

#include "elimination.h"
#include "graph.h"

namespace quarn {

constexpr std::size_t no_clique = static_cast<std::size_t>(-1);

// A forest over a list of cliques, with one tree for each connected component of their graph. The nodes that a clique
// shares with all cliques outside its subtree are among those of its parent (the running intersection property).
struct clique_forest {
    std::vector<std::size_t> parents;    // no_clique for a root
    std::vector<std::size_t> bottom_up;  // all cliques, children before their parents, tree after tree
};

// The root of each tree is the last clique of its component in the list; where there are continuous vertices, the last
// one that makes a strong root: away from it a clique brings in continuous vertices only, unless all that it shares with
// its parent is discrete. `domains` has an entry for each vertex.
clique_forest make_clique_forest(const clique_list& cliques, std::span<const vertex_domain> domains);
// The same where it does not matter which vertices are continuous.
clique_forest make_clique_forest(const clique_list& cliques, std::size_t vertex_count);

}  // namespace quarn
