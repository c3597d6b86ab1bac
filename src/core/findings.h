// Evidence on one discrete node: a weight for each state, summed up in an index.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quarn {

struct findings {
    static constexpr int64_t none = -1;     // every weight is 1
    static constexpr int64_t general = -2;  // the weights count
    // Otherwise the state that is observed; the weights are then not looked at.

    int64_t index = none;
    std::vector<double> weights;  // empty until a weight is entered

    double weight(std::size_t state) const noexcept;
    // Enters one weight; the others follow from the present evidence. Needs the number of states.
    void enter(std::size_t state, double weight, std::size_t state_count);
    // Whether some weight is neither 0 nor 1.
    bool is_likelihood() const noexcept;
};

// The index for a vector of weights: the state of the single 1 among zeros, none for ones only, else general.
int64_t classify_weights(std::span<const double> weights) noexcept;

// Whether two pieces of evidence on a node differ (NaN differs from everything). For a node with one state, observing
// it is no evidence.
bool findings_differ(const findings& a, const findings& b, std::size_t state_count) noexcept;

}  // namespace quarn
