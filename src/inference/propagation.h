// Propagation: brings the tables of the junction trees in line with the nodes' tables and the entered evidence.
#pragma once

#include "scaling.h"

namespace quarn {

// Every tree in turn, those in which nothing changed excepted. Stops at the first failure, after which that tree is at
// sum equilibrium without evidence (at none when its tables are invalid, excluded nodes contradict each other, or memory
// is lacking for that).
void propagate(domain& compiled, q_equilibrium_t equilibrium, q_mode_t mode);
// One tree; messages meet in the clique `root`, where one is given.
void propagate(junction_tree& tree, clique* root, q_equilibrium_t equilibrium, q_mode_t mode);

// The same without the checks.
void propagate_tree(const tree_context& in, q_equilibrium_t equilibrium, q_mode_t mode,
                    clique* root = nullptr);

// After a failure: sum equilibrium without evidence, all policies taken in; none where that fails too.
void recover(const tree_context& in) noexcept;

}  // namespace quarn
