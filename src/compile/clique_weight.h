// The cost of cliques: the number of table entries that they stand for.
#pragma once

#include <span>

#include "graph.h"

namespace quarn {

// The configurations of the discrete members times the entries that each of them has: one number, and with c
// continuous members also c means and c (c + 1) / 2 covariances.
class clique_weight {
public:
    void add(const vertex_domain& member) noexcept {
        if (member.is_continuous)
            ++continuous_;
        else
            configurations_ *= static_cast<double>(member.size);
    }
    double value() const noexcept { return configurations_ * (1 + continuous_ * (continuous_ + 3) / 2); }

private:
    double configurations_ = 1;
    double continuous_ = 0;
};

double weight_of(const graph& whole, const vertex_set& clique) noexcept;
double total_weight_of(const graph& whole, std::span<const vertex_set> cliques) noexcept;

// Whether weights can rank cliques otherwise than their sizes do: not when all vertices have the same domain size.
bool weights_differ_from_sizes(const graph& whole) noexcept;

}  // namespace quarn
