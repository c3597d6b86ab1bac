#include "cg_evidence.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "cg_conditioning.h"
#include "cg_plan.h"
#include "errors.h"

namespace quarn {
namespace {

constexpr double impossible = -std::numeric_limits<double>::infinity();  // as the logarithm of a weight

// Means this near to the value, as a share of it, agree with it.
constexpr double same_value = 1e-10;

struct normal_density {
    double mean;
    double variance;
};

normal_density density_of(const table& asked, std::size_t configuration, std::size_t position) noexcept {
    const double* const block = asked.moments.data() + configuration * asked.block_size();
    return {block[cg_mean(position)], block[cg_covariance(position, position)]};
}

// The logarithm of a weight times the density of the value, without the constant factor.
double log_likelihood(double log_weight, const normal_density& of, double value) noexcept {
    if (!(log_weight > impossible) || !(of.variance > 0)) return impossible;
    const double difference = value - of.mean;
    return log_weight - (difference * difference / of.variance + std::log(of.variance)) / 2;
}

void require_density(const table& asked, std::size_t position, double value) {
    double largest = impossible;
    bool is_possible = false;
    for (std::size_t i = 0; i < asked.size; ++i) {
        if (!(asked.data[i] > impossible)) continue;
        is_possible = true;
        const normal_density of = density_of(asked, i, position);
        require(of.variance > 0 || std::abs(of.mean - value) > same_value * std::abs(value),
                q_error_zero_variance);
        largest = std::max(largest, log_likelihood(asked.data[i], of, value));
    }
    require(is_possible, q_error_inconsistency_or_underflow);
    require(largest >= std::numeric_limits<double>::lowest() / 2, q_error_low_density);
}

}  // namespace

void insert_tail_evidence(table& changed, std::size_t position, double value, const workers& allowed) {
    require(changed.roles[position] == cg_role::tail);
    run_configurations(
        changed, changed.continuous_count(), 0, allowed, [&](std::size_t configuration, double*) noexcept {
            double* const block = changed.moments.data() + configuration * changed.block_size();
            for (std::size_t h = 0; h < changed.roles.size(); ++h) {
                if (changed.roles[h] != cg_role::head) continue;
                double& coefficient = block[cg_covariance(h, position)];
                block[cg_mean(h)] += coefficient * value;
                coefficient = 0;
            }
        });
    changed.roles[position] = cg_role::unknown;
}

void insert_head_evidence(table& changed, std::size_t position, double value, const workers& allowed) {
    require(changed.roles[position] == cg_role::head);
    require_density(changed, position, value);
    const std::size_t nodes = changed.continuous_count();
    run_configurations(
        changed, 2 * changed.block_size(), nodes, allowed, [&](std::size_t i, double* scratch) noexcept {
            double* const block = changed.moments.data() + i * changed.block_size();
            changed.data[i] = log_likelihood(changed.data[i], density_of(changed, i, position), value);
            // The regression on the difference from the value, which is 0.
            block[cg_mean(position)] -= value;
            condition_block(block, changed.roles, {&position, 1}, scratch);
            for (std::size_t h = 0; h < nodes; ++h) block[cg_covariance(h, position)] = 0;
        });
    changed.roles[position] = cg_role::unknown;
}

}  // namespace quarn
