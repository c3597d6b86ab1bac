#include "value_sampling.h"

#include <algorithm>

#include "cg_plan.h"

namespace quarn {
namespace {

// The others given a head that was drawn: what is left of the variance of each is lessened by what this one explains.
void regress(std::span<double> block, std::span<const cg_role> roles, std::size_t drawn,
             double deviation) noexcept {
    const double variance = block[cg_covariance(drawn, drawn)];
    for (std::size_t h = drawn + 1; h < roles.size(); ++h) {
        if (roles[h] != cg_role::head) continue;
        const double coefficient = block[cg_covariance(h, drawn)] / variance;
        block[cg_mean(h)] += coefficient * deviation;
        for (std::size_t g = drawn + 1; g <= h; ++g)
            if (roles[g] == cg_role::head)
                block[cg_covariance(h, g)] -= coefficient * block[cg_covariance(g, drawn)];
    }
}

}  // namespace

void value_sampler::draw(const table& from, std::size_t configuration, std::span<double> values,
                         random_generator& generator) {
    const std::span<const cg_role> roles = from.roles;
    const double* const source = from.moments.data() + configuration * from.block_size();
    block_.assign(source, source + from.block_size());
    variances_.resize(roles.size());
    for (std::size_t h = 0; h < roles.size(); ++h) {
        if (roles[h] != cg_role::head) continue;
        variances_[h] = block_[cg_covariance(h, h)];
        for (std::size_t t = 0; t < roles.size(); ++t)
            if (roles[t] == cg_role::tail) block_[cg_mean(h)] += block_[cg_covariance(h, t)] * values[t];
    }
    for (std::size_t h = 0; h < roles.size(); ++h) {
        if (roles[h] != cg_role::head) continue;
        const double mean = block_[cg_mean(h)];
        const double variance = block_[cg_covariance(h, h)];
        const bool varies = variance > rounding_share * variances_[h];
        values[h] = varies ? generator.normal(mean, variance) : mean;
        if (varies) regress(block_, roles, h, values[h] - mean);
    }
}

}  // namespace quarn
