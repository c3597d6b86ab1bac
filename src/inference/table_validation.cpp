#include "table_validation.h"

#include <algorithm>
#include <cmath>
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

// Regressions with finite numbers and no negative variance. Their configurations are all possible.
void validate_densities(table& densities) {
    for (std::size_t i = 0; i < densities.size; ++i) {
        const std::span<const double> block(densities.moments.data() + i * densities.block_size(),
                                            densities.block_size());
        require(std::ranges::all_of(block, [](double p) { return std::isfinite(p); }) &&
                    block[cg_variance] >= 0,
                q_error_invalid_probability_potential);
    }
    std::ranges::fill(densities.data, 1.0);
}

void validate_rows(table& probabilities, std::size_t states) {
    const std::span<double> entries = probabilities.data.span();
    for (std::size_t row = 0; row < entries.size(); row += states)  // the node itself varies fastest
        require(is_distribution(entries.subspan(row, states)), q_error_invalid_probability_potential);
    for (std::size_t row = 0; row < entries.size(); row += states) {
        const double sum = sum_of(&entries[row], states);
        if (sum != 1) std::ranges::for_each(entries.subspan(row, states), [&](double& p) { p /= sum; });
    }
}

}  // namespace

void validate_distributions(node& owner) {
    if (owner.table_is_valid) return;
    table& validated = own_table(owner);
    validated.materialise();
    if (owner.is_continuous())
        validate_densities(validated);
    else
        validate_rows(validated, owner.state_count);
    owner.table_is_valid = true;
}

void validate_potential(table& shared) {
    shared.materialise();
    require(std::ranges::all_of(shared.data, [](double p) { return p >= 0 && std::isfinite(p); }),
            q_error_invalid_probability_potential);
}

void validate_utilities(node& owner) {
    table& validated = own_table(owner);
    validated.materialise();
    require(std::ranges::all_of(validated.data, [](double u) { return std::isfinite(u); }),
            q_error_invalid_probability_potential);
}

}  // namespace quarn
