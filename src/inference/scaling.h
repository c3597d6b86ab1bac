// Multiplication into the tables of a tree such that products of many numbers neither vanish nor lose digits unnoticed.
//
// Numbers that tables are divided by go into the normalisation constant. Every clique keeps a bound below which it has no
// positive entry; where the bound comes near the smallest double the table is looked at, and the tree remembers that
// entries may be lost which other evidence would need.
#pragma once

#include <span>

#include "junction_forest.h"
#include "table_operations.h"

namespace quarn {

// Below this a double is less exact the smaller it is: what depends on such numbers has underflowed.
constexpr double smallest_exact = std::numeric_limits<double>::min();
constexpr double small = 1e-100;  // a table of such numbers is divided by the largest

// What the steps of a propagation work on.
struct tree_context {
    junction_forest& forest;
    junction_tree& tree;
    quarn::workers workers;
};

void require_exact(double number);

// Takes a number that was divided by, or that multiplies everything, into the constant.
double count_in(junction_tree& tree, double divisor) noexcept;
void divide(junction_tree& tree, clique& divided, double divisor) noexcept;
// A number that may be no ordinary one, by its logarithm.
void count_logarithm(junction_tree& tree, double logarithm) noexcept;

// Factors that are at most 1, not all of them 0. Fails with q_error_inconsistency_or_underflow when nothing is left.
void multiply_into(const tree_context& in, clique& target, const table_map& map,
                   std::span<const double> factors);

// The same where the weights of the clique are logarithms.
void add_logarithms(const tree_context& in, clique& target, const table_map& map,
                    std::span<const double> factors);

// The weights of a clique are new ones.
void weights_changed(junction_tree& tree, clique& changed) noexcept;

// To be told before a table is multiplied otherwise: the smallest positive factor.
void expect_factor(junction_tree& tree, clique& target, double smallest) noexcept;

}  // namespace quarn
