// Positions within the block of moments that a table with continuous nodes holds for each discrete configuration:
// row i has the mean of continuous node i, then its covariances with nodes 0 .. i.
#pragma once

#include <cstddef>
#include <utility>

namespace quarn {

// What a table says of a continuous node.
enum class cg_role : unsigned char {
    head = 0,    // it holds a distribution of the node
    tail = 1,    // it conditions on the node
    unknown = 2  // it holds no information of the node yet
};

constexpr std::size_t cg_block_size(std::size_t nodes) noexcept { return nodes * (nodes + 3) / 2; }
constexpr std::size_t cg_mean(std::size_t i) noexcept { return i * (i + 3) / 2; }
constexpr std::size_t cg_covariance(std::size_t i, std::size_t j) noexcept {
    if (i < j) std::swap(i, j);
    return cg_mean(i) + j + 1;
}

// In the own table of a continuous node, node 0 is the node itself: its mean is the intercept, and the covariance of
// node k with it holds the coefficient of continuous parent k.
constexpr std::size_t cg_intercept = cg_mean(0);
constexpr std::size_t cg_variance = cg_covariance(0, 0);
constexpr std::size_t cg_coefficient(std::size_t k) noexcept { return cg_covariance(k, 0); }

}  // namespace quarn
