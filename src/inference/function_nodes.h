// Function nodes: computed from their models, each after what its parents stand for is known.
#pragma once

#include <functional>
#include <vector>

#include "evaluation.h"
#include "junction_forest.h"

namespace quarn {

// The expression of a function for the states that its model nodes are in. Fails with q_error_computation_failed where there
// is none, and as node_values does.
const expression& chosen_expression(const node& function, const node_values& values);

// Computes a function: a real-valued one gets its value; of a discrete one with a model the state that is selected gets
// all weight in its table, which counts as changed where it differs. On failure it keeps the code instead.
void update_function(node& function) noexcept;

// Whether the tables of all discrete functions in a tree could be computed; else the code of one that could not.
q_error_t failed_function(const junction_tree& tree) noexcept;

// A junction tree, or a function node.
struct dependence_step {
    junction_tree* tree;
    node* function;
};
// All trees and functions of a domain: trees in the order of the forest, but each after the discrete functions in it that
// have models, and functions after their parents and the trees of these.
std::vector<dependence_step> order_by_dependence(domain& compiled, const junction_forest& forest);

// Propagates all trees by the given means, and computes all functions on the way. When a tree fails the trees after it are
// left as they are; one with a discrete function that cannot be computed is left at no equilibrium, and does not keep
// those after it from being propagated. Fails, after all of it, with the first failure. Give it a std::ref, which needs no
// memory: a failure before a tree is reached leaves that one as it was.
void propagate_in_order(domain& compiled, junction_forest& forest,
                        const std::function<void(junction_tree&)>& propagate);

// Computes all functions from what is propagated. Returns whether there was memory for it.
bool update_functions(domain& compiled) noexcept;

}  // namespace quarn
