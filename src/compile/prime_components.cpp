// Maximal prime subgraph decomposition [Leimer 1993].
//
//   Maps     connected graph, cliques of a minimal triangulation -> vertex sets, ordered by their smallest members
//   Cost     that of a clique tree, and the squares of its separators' sizes
//   Method   in a tree of the cliques, neighbours whose separator is not complete in the graph belong to one component
//            [Olesen & Madsen 2002]
#include "prime_components.h"

#include <algorithm>
#include <iterator>

#include "clique_tree.h"

namespace quarn {
namespace {

bool is_linked(const graph& tested, vertex a, vertex b) noexcept {
    return std::ranges::binary_search(tested.neighbors[a], b);
}

bool is_complete_in(const graph& tested, const vertex_set& vertices) noexcept {
    for (auto a = vertices.begin(); a != vertices.end(); ++a)
        if (!std::all_of(a + 1, vertices.end(), [&](vertex b) { return is_linked(tested, *a, b); }))
            return false;
    return true;
}

}  // namespace

std::vector<vertex_set> prime_components(const graph& connected, const clique_list& minimal_triangulation) {
    const clique_forest tree = make_clique_forest(minimal_triangulation, connected.vertex_count());
    std::vector<vertex_set> components;
    std::vector<std::size_t> component_of(minimal_triangulation.size());
    for (auto next = tree.bottom_up.rbegin(); next != tree.bottom_up.rend(); ++next) {  // parents first
        const vertex_set& clique = minimal_triangulation[*next];
        vertex_set separator;
        if (const std::size_t parent = tree.parents[*next]; parent != no_clique) {
            std::ranges::set_intersection(clique, minimal_triangulation[parent],
                                          std::back_inserter(separator));
            component_of[*next] = component_of[parent];
        }
        if (tree.parents[*next] == no_clique || is_complete_in(connected, separator)) {
            component_of[*next] = components.size();
            components.emplace_back();
        }
        vertex_set& component = components[component_of[*next]];
        component.insert(component.end(), clique.begin(), clique.end());
    }
    for (vertex_set& component : components) {
        std::ranges::sort(component);
        component.erase(std::unique(component.begin(), component.end()), component.end());
    }
    std::ranges::sort(components);
    return components;
}

}  // namespace quarn
