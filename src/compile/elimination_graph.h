// A graph from which vertices are eliminated, with the fill-in that each elimination would cost kept up to date.
#pragma once

#include <cstdint>

#include "graph.h"

namespace quarn {

class elimination_graph {
public:
    // Weighted: a missing link counts as the product of the sizes of its ends, otherwise as 1.
    elimination_graph(const graph& start, bool weighted);

    bool contains(vertex v) const noexcept { return !removed_[v]; }
    std::size_t degree(vertex v) const noexcept { return degrees_[v]; }
    vertex_set neighbors(vertex v) const;
    bool adjacent(vertex a, vertex b) const noexcept;

    // The links missing among the neighbours. Weights are counted modulo 2^64.
    uint64_t fill_in(vertex v) const noexcept { return fill_in_[v]; }
    // The weight of the vertex and its neighbours.
    double clique_weight_of(vertex v) const noexcept;

    // Links two vertices that are not linked.
    void add_link(vertex a, vertex b);
    // Removes a vertex whose neighbours are linked to each other.
    void remove(vertex removed);
    // The vertices that are left of those whose scores changed since the last call, in ascending order.
    vertex_set take_changed();

private:
    void count_fill_in();
    void forget_triangle(vertex a, vertex b, vertex c) noexcept;
    void note_change(vertex v);
    void insert(vertex list, vertex added);
    template <class Visit>
    void for_each_common_neighbor(vertex a, vertex b, Visit&& visit) const;

    const graph& start_;
    std::vector<vertex_set> lists_;  // neighbours; removed ones stay in a list until they are most of it
    std::vector<char> removed_;
    std::vector<std::size_t> degrees_;
    std::vector<uint64_t> sizes_;           // what a vertex contributes to the weight of a missing link
    std::vector<uint64_t> neighbor_sizes_;  // the sum over the neighbours
    std::vector<uint64_t> fill_in_;
    std::vector<std::size_t> factors_of_two_;  // the weight of the neighbours is at least 2 to that power
    vertex_set changed_;
    std::vector<char> is_changed_;
};

}  // namespace quarn
