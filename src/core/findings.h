// Evidence on one discrete node: a weight for each state, summed up in an index.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quarn {

// Where evidence lies elsewhere: an index and, for general evidence, a weight for each state.
struct findings_view {
    int64_t index;
    std::span<const double> weights;

    double weight(std::size_t state) const noexcept;
    // Whether some weight is neither 0 nor 1.
    bool is_likelihood() const noexcept;
};

struct findings {
    static constexpr int64_t none = -1;     // every weight is 1
    static constexpr int64_t general = -2;  // the weights count
    // Otherwise the state that is observed; the weights are then not looked at.

    int64_t index = none;
    std::vector<double> weights;  // empty until a weight is entered

    findings_view view() const noexcept { return {index, weights}; }
    double weight(std::size_t state) const noexcept { return view().weight(state); }
    bool is_likelihood() const noexcept { return view().is_likelihood(); }

    // Enters one weight; the others follow from the present evidence. Needs the number of states. Cannot fail where the
    // weights have room for that many, and does nothing when it fails.
    void enter(std::size_t state, double weight, std::size_t state_count);
    // Enters a weight for each state. Fails likewise.
    void enter(std::span<const double> entered);
};

// The index for a vector of weights: the state of the single 1 among zeros, none for ones only, else general.
int64_t classify_weights(std::span<const double> weights) noexcept;

// Whether two pieces of evidence on a node differ (NaN differs from everything). For a node with one state, observing
// it is no evidence.
bool findings_differ(findings_view a, findings_view b, std::size_t state_count) noexcept;

}  // namespace quarn
