#include "clique_weight.h"

#include <algorithm>

namespace quarn {

double weight_of(const graph& whole, const vertex_set& clique) noexcept {
    clique_weight weight;
    for (const vertex member : clique) weight.add(whole.domains[member]);
    return weight.value();
}

double total_weight_of(const graph& whole, std::span<const vertex_set> cliques) noexcept {
    double total = 0;
    for (const vertex_set& clique : cliques) total += weight_of(whole, clique);
    return total;
}

bool weights_differ_from_sizes(const graph& whole) noexcept {
    return std::ranges::any_of(whole.domains, [&](const vertex_domain& tested) {
        const vertex_domain& other = whole.domains.front();
        return tested.is_continuous != other.is_continuous || tested.size != other.size;
    });
}

}  // namespace quarn
