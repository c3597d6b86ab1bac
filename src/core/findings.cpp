#include "findings.h"

#include <algorithm>

namespace quarn {

int64_t classify_weights(std::span<const double> weights) noexcept {
    std::size_t ones = 0;
    int64_t observed = findings::none;
    for (std::size_t state = 0; state < weights.size(); ++state) {
        if (weights[state] == 0) continue;
        if (weights[state] != 1) return findings::general;
        ++ones;
        observed = static_cast<int64_t>(state);
    }
    if (ones == weights.size()) return findings::none;
    return ones == 1 ? observed : findings::general;
}

double findings_view::weight(std::size_t state) const noexcept {
    if (index == findings::none) return 1;
    if (index == findings::general) return weights[state];
    return static_cast<std::size_t>(index) == state ? 1 : 0;
}

void findings::enter(std::size_t state, double weight, std::size_t state_count) {
    weights.resize(state_count);
    if (index != general) {
        std::ranges::fill(weights, index == none ? 1.0 : 0.0);
        if (index != none) weights[static_cast<std::size_t>(index)] = 1;
    }
    weights[state] = weight;
    index = classify_weights(weights);
}

void findings::enter(std::span<const double> entered) {
    weights.assign(entered.begin(), entered.end());
    index = classify_weights(weights);
}

bool findings_view::is_likelihood() const noexcept {
    return index == findings::general &&
           std::ranges::any_of(weights, [](double w) { return !(w == 0 || w == 1); });
}

bool findings_differ(findings_view a, findings_view b, std::size_t state_count) noexcept {
    if (a.index == b.index) return a.index == findings::general && !std::ranges::equal(a.weights, b.weights);
    if (state_count > 1) return true;
    return std::min(a.index, b.index) != findings::none || std::max(a.index, b.index) != 0;
}

}  // namespace quarn
