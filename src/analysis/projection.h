// Where the entries of a table and those of a smaller one, over some of its nodes, meet: one at a time, not in a walk.
#pragma once

#include <span>
#include <vector>

#include "random_generator.h"
#include "table_map.h"

namespace quarn {

// For an entry of the larger table its position in the smaller one.
class projection {
public:
    // The map, which must stay where it is, is that between the two tables; only one with a list is read.
    projection(const table_map& map, std::span<node* const> nodes, std::span<node* const> smaller);

    std::size_t operator()(std::size_t entry) const noexcept;

private:
    const table_map* list_;  // null: digits
    loop_levels digits_;
};

// For an entry of the smaller table those of the larger one that belong to it.
class preimages {
public:
    preimages() = default;
    preimages(const table_map& map, std::span<node* const> nodes, std::span<node* const> smaller);

    // One of them, by its share of their total.
    std::size_t choose(const double* weights, std::size_t of, double total,
                       random_generator& generator) const;

private:
    loop_levels kept_, removed_;
    // Where the map is a list: all entries, sorted by their positions; and where those of each position begin.
    std::vector<uint32_t> entries_;
    std::vector<std::size_t> first_;
};

}  // namespace quarn
