#include "table_validation.h"

#include <algorithm>
#include <limits>
#include <span>

#include "errors.h"
#include "kernels.h"

namespace quarn {
namespace {

constexpr double too_large = std::numeric_limits<double>::max();

bool is_distribution(std::span<const double> entries) noexcept {
    const double sum = sum_of(entries.data(), entries.size());
    return sum > 0 && sum < too_large &&
           std::ranges::all_of(entries, [](double p) { return p >= 0 && p < too_large; });
}

}  // namespace

void validate_distributions(node& owner) {
    if (owner.table_is_valid) return;
    table& probabilities = own_table(owner);
    probabilities.materialise();
    const std::size_t states = owner.state_count;  // the node itself varies fastest
    const std::span<double> entries = probabilities.data.span();
    for (std::size_t row = 0; row < entries.size(); row += states)
        require(is_distribution(entries.subspan(row, states)), q_error_invalid_probability_potential);
    for (std::size_t row = 0; row < entries.size(); row += states) {
        const double sum = sum_of(&entries[row], states);
        if (sum != 1) std::ranges::for_each(entries.subspan(row, states), [&](double& p) { p /= sum; });
    }
    owner.table_is_valid = true;
}

}  // namespace quarn
