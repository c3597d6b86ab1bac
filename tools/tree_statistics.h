// How large the tables of a triangulated model are.
#pragma once

#include <cstddef>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "model.h"

namespace tool {

// Sizes need not fit 64 bits.
struct tree_statistics {
    size_t trees = 0;
    size_t cliques = 0;
    std::vector<q_node_t> largest_clique{};  // the first one with the largest table
    long double largest_table_size = 0;      // how many numbers that holds
    long double total_table_size = 0;        // the sum of q_junction_tree_get_total_size()
    long double clique_numbers = 0;          // in the tables of all cliques
    long double compiled_numbers =
        0;                     // the same with separators, utilities, joint distributions and scratch memory
    size_t fill_in_links = 0;  // pairs in a clique that neither a link nor a child joins
};
tree_statistics measure_trees(const model& triangulated);

// The numbers in a table over these nodes, which for continuous ones has means and covariances.
long double table_size(const std::vector<q_node_t>& members);

// A list of the library, which ends with null.
std::vector<q_node_t> listed(const q_node_t* nodes);

// Null where it does not fit 64 bits, for which the library returns the largest number.
nlohmann::ordered_json whole(long double number);

}  // namespace tool
