// The fill-in of all vertices under two changes: linking two vertices, and removing one with a complete neighbourhood.
//
//   Maps     graph -> graph, fill-in of each vertex; every elimination is a sequence of the two changes
//   Cost     at first one pass over all triangles; a link between a and b: O(d log(e / d)) for their degrees d <= e, to
//            find their common neighbours, and the shift of two lists; a removal: the degree, amortised
//   Method   a link (a, b) is no longer missing around the common neighbours of a and b, and makes b a neighbour of a
//            that lacks links to all neighbours of a but the common ones; a removal takes away the links missing
//            between the vertex and what its neighbours are linked to beyond it
#include "elimination_graph.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "clique_weight.h"

namespace quarn {
namespace {

using place = vertex_set::const_iterator;

// The first element not below the wanted one, by doubling steps: cheap when it is near.
place advance_to(place from, place end, vertex wanted) noexcept {
    std::ptrdiff_t step = 1;
    while (step < end - from && from[step] < wanted) {
        from += step;
        step *= 2;
    }
    return std::lower_bound(from, from + std::min(step, end - from), wanted);
}

std::size_t power_of_two_below(const vertex_domain& domain) noexcept {
    return static_cast<std::size_t>(std::bit_width(domain.size)) - 1;
}

}  // namespace

elimination_graph::elimination_graph(const graph& start, bool weighted)
    : start_(start),
      lists_(start.neighbors),
      removed_(start.vertex_count(), false),
      degrees_(start.vertex_count()),
      sizes_(start.vertex_count(), 1),
      neighbor_sizes_(start.vertex_count()),
      fill_in_(start.vertex_count()),
      factors_of_two_(start.vertex_count()),
      is_changed_(start.vertex_count(), false) {
    if (weighted) std::ranges::transform(start.domains, sizes_.begin(), &vertex_domain::size);
    for (vertex v = 0; v < start.vertex_count(); ++v) {
        degrees_[v] = lists_[v].size();
        for (const vertex neighbor : lists_[v]) {
            neighbor_sizes_[v] += sizes_[neighbor];
            factors_of_two_[v] += power_of_two_below(start.domains[neighbor]);
        }
    }
    count_fill_in();
}

// All pairs of neighbours, less those that are linked: each of these closes a triangle.
void elimination_graph::count_fill_in() {
    for (vertex a = 0; a < lists_.size(); ++a) {
        uint64_t earlier = 0;
        for (const vertex b : lists_[a]) {
            fill_in_[a] += earlier * sizes_[b];
            earlier += sizes_[b];
        }
    }
    for (vertex a = 0; a < lists_.size(); ++a)
        for (const vertex b : lists_[a])
            if (a < b)
                for_each_common_neighbor(a, b, [&](vertex c) {
                    if (b < c) forget_triangle(a, b, c);
                });
}

void elimination_graph::forget_triangle(vertex a, vertex b, vertex c) noexcept {
    fill_in_[a] -= sizes_[b] * sizes_[c];
    fill_in_[b] -= sizes_[a] * sizes_[c];
    fill_in_[c] -= sizes_[a] * sizes_[b];
}

vertex_set elimination_graph::neighbors(vertex v) const {
    vertex_set present;
    present.reserve(degrees_[v]);
    std::ranges::copy_if(lists_[v], std::back_inserter(present), [&](vertex u) { return contains(u); });
    return present;
}

bool elimination_graph::adjacent(vertex a, vertex b) const noexcept {
    return lists_[a].size() < lists_[b].size() ? std::ranges::binary_search(lists_[a], b)
                                               : std::ranges::binary_search(lists_[b], a);
}

// A weight beyond all numbers is known without looking at the neighbours, so a hub costs no more than others.
double elimination_graph::clique_weight_of(vertex v) const noexcept {
    if (factors_of_two_[v] >= std::numeric_limits<double>::max_exponent)
        return std::numeric_limits<double>::infinity();
    clique_weight weight;
    weight.add(start_.domains[v]);
    for (const vertex neighbor : lists_[v])
        if (contains(neighbor)) weight.add(start_.domains[neighbor]);
    return weight.value();
}

void elimination_graph::add_link(vertex a, vertex b) {
    uint64_t common = 0;
    for_each_common_neighbor(a, b, [&](vertex c) {
        fill_in_[c] -= sizes_[a] * sizes_[b];
        common += sizes_[c];
        note_change(c);
    });
    fill_in_[a] += sizes_[b] * (neighbor_sizes_[a] - common);
    fill_in_[b] += sizes_[a] * (neighbor_sizes_[b] - common);
    insert(a, b);
    insert(b, a);
}

void elimination_graph::insert(vertex list, vertex added) {
    vertex_set& neighbors = lists_[list];
    neighbors.insert(std::ranges::lower_bound(neighbors, added), added);
    ++degrees_[list];
    neighbor_sizes_[list] += sizes_[added];
    factors_of_two_[list] += power_of_two_below(start_.domains[added]);
    note_change(list);
}

void elimination_graph::remove(vertex removed) {
    removed_[removed] = true;
    for (const vertex v : lists_[removed]) {
        if (!contains(v)) continue;
        const uint64_t shared = neighbor_sizes_[removed] - sizes_[v];
        neighbor_sizes_[v] -= sizes_[removed];
        fill_in_[v] -= sizes_[removed] * (neighbor_sizes_[v] - shared);
        factors_of_two_[v] -= power_of_two_below(start_.domains[removed]);
        if (2 * --degrees_[v] < lists_[v].size())
            std::erase_if(lists_[v], [&](vertex u) { return !contains(u); });
        note_change(v);
    }
}

vertex_set elimination_graph::take_changed() {
    for (const vertex v : changed_) is_changed_[v] = false;
    std::erase_if(changed_, [&](vertex v) { return !contains(v); });
    std::ranges::sort(changed_);
    return std::exchange(changed_, {});
}

void elimination_graph::note_change(vertex v) {
    if (is_changed_[v]) return;
    is_changed_[v] = true;
    changed_.push_back(v);
}

template <class Visit>
void elimination_graph::for_each_common_neighbor(vertex a, vertex b, Visit&& visit) const {
    const bool a_is_shorter = lists_[a].size() < lists_[b].size();
    const vertex_set& shorter = lists_[a_is_shorter ? a : b];
    const vertex_set& longer = lists_[a_is_shorter ? b : a];
    place found = longer.begin();
    for (const vertex wanted : shorter) {
        found = advance_to(found, longer.end(), wanted);
        if (found == longer.end()) return;
        if (*found == wanted && contains(wanted)) visit(wanted);
    }
}

}  // namespace quarn
