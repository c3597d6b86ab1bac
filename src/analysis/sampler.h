// What draws configurations of the nodes with a kind, once prepared.
#pragma once

#include <vector>

#include "node.h"
#include "random_generator.h"

namespace quarn {

// What was drawn for a node: its state, or its value.
struct drawn_node {
    node* owner;
    std::size_t state = 0;
    double value = 0;
};

class sampler {
public:
    virtual ~sampler() = default;

    // Draws a configuration into drawn(), and returns the logarithm of the probability of its states.
    virtual double draw(random_generator& generator) = 0;

    const std::vector<drawn_node>& drawn() const noexcept { return drawn_; }

protected:
    std::vector<drawn_node> drawn_;
};

// The logarithm of a product of probabilities, one logarithm for many of them.
class log_product {
public:
    void multiply(double probability) noexcept;
    double value() const noexcept;

private:
    double product_ = 1;
    double logarithm_ = 0;
};

}  // namespace quarn
