#include "graph.h"

#include <algorithm>
#include <numeric>

namespace quarn {
namespace {

constexpr std::size_t unlabelled = static_cast<std::size_t>(-1);

// Breadth first.
void label_component(const graph& whole, vertex start, std::size_t label, std::vector<std::size_t>& labels) {
    std::vector<vertex> reached{start};
    labels[start] = label;
    for (std::size_t next = 0; next < reached.size(); ++next)
        for (const vertex neighbor : whole.neighbors[reached[next]])
            if (labels[neighbor] == unlabelled) {
                labels[neighbor] = label;
                reached.push_back(neighbor);
            }
}

}  // namespace

vertex_set first_vertices(std::size_t count) {
    vertex_set vertices(count);
    std::iota(vertices.begin(), vertices.end(), vertex{0});
    return vertices;
}

bool is_complete(const graph& tested) noexcept {
    return std::ranges::all_of(tested.neighbors, [&](const vertex_set& neighbors) {
        return neighbors.size() + 1 == tested.vertex_count();
    });
}

std::vector<vertex_set> connected_components(const graph& whole) {
    std::vector<std::size_t> labels(whole.vertex_count(), unlabelled);
    std::vector<vertex_set> components;
    for (vertex v = 0; v < whole.vertex_count(); ++v) {
        if (labels[v] == unlabelled) {
            label_component(whole, v, components.size(), labels);
            components.emplace_back();
        }
        components[labels[v]].push_back(v);
    }
    return components;
}

// A hub with more links than the piece has vertices is asked for each of these.
graph graph_pieces::induced_by(const vertex_set& vertices) {
    graph piece{std::vector<vertex_set>(vertices.size()), std::vector<vertex_domain>(vertices.size())};
    for (std::size_t i = 0; i < vertices.size(); ++i) place_[vertices[i]] = i;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const vertex_set& linked = whole_.neighbors[vertices[i]];
        piece.domains[i] = whole_.domains[vertices[i]];
        if (linked.size() > 16 * vertices.size()) {
            for (std::size_t j = 0; j < vertices.size(); ++j)
                if (std::ranges::binary_search(linked, vertices[j])) piece.neighbors[i].push_back(j);
        } else {
            for (const vertex neighbor : linked)
                if (place_[neighbor] != absent) piece.neighbors[i].push_back(place_[neighbor]);
        }
    }
    for (const vertex v : vertices) place_[v] = absent;
    return piece;
}

}  // namespace quarn
