// Undirected graphs over vertices 0 .. n-1, which stand for the variables of a network.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace quarn {

using vertex = std::size_t;
using vertex_set = std::vector<vertex>;  // ascending

struct vertex_domain {
    std::size_t size = 1;  // number of states; 1: continuous
    bool is_continuous = false;
};

struct graph {
    std::size_t vertex_count() const noexcept { return neighbors.size(); }

    std::vector<vertex_set> neighbors;
    std::vector<vertex_domain> domains;  // one for each vertex
};

using edge = std::pair<vertex, vertex>;  // the smaller one first

// 0 .. count - 1
vertex_set first_vertices(std::size_t count);

// Whether all vertices are linked to each other.
bool is_complete(const graph& tested) noexcept;

// The vertex sets of the connected components, in the order of their smallest vertices.
std::vector<vertex_set> connected_components(const graph& whole);

// Cuts pieces out of a graph.
class graph_pieces {
public:
    explicit graph_pieces(const graph& whole) : whole_(whole), place_(whole.vertex_count(), absent) {}

    // The subgraph that some vertices induce; vertex i of it is the i-th of them.
    graph induced_by(const vertex_set& vertices);

private:
    static constexpr std::size_t absent = static_cast<std::size_t>(-1);

    const graph& whole_;
    std::vector<std::size_t> place_;  // in the piece being cut out
};

}  // namespace quarn
