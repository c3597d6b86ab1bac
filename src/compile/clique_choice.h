// The choice of cliques for nodes: one that takes the table, one where the belief is read.
#pragma once

#include <span>
#include <vector>

#include "junction_forest.h"

namespace quarn {

// Whether a node is a member of a clique.
bool holds(const clique& tested, const node& member) noexcept;

// Which cliques each node is in.
class clique_index {
public:
    explicit clique_index(const junction_forest& forest);

    // The smallest clique that holds all the nodes, of which there is one: by its discrete size, then by its continuous
    // members; between equals the first in the list of cliques. The nodes are vertices of the forest.
    clique& smallest_with(std::span<node* const> nodes) const noexcept;

private:
    const junction_forest& forest_;
    std::vector<std::vector<clique*>> cliques_of_;  // by vertex, in the order of the list
};

// The smallest clique of those that hold the node, which are searched along the tree from its home; between equals the
// one whose table runs through fewer configurations of the members before the node, then the one met first.
clique& best_clique(const compiled_node& sought);

}  // namespace quarn
