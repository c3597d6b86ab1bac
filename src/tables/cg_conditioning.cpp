#include "cg_conditioning.h"

#include <algorithm>

#include "cg_plan.h"
#include "errors.h"

namespace quarn {
namespace {

class block_conditioning {
public:
    block_conditioning(double* block, std::span<const cg_role> roles, double* variances) noexcept
        : block_(block), roles_(roles), variances_(variances) {
        for (std::size_t i = 0; i < roles.size(); ++i) variances_[i] = covariance(i, i);
    }

    void run(std::span<const std::size_t> positions) noexcept {
        for (std::size_t left = positions.size(); left > 0; --left)
            make_tail(
                *std::ranges::max_element(positions, {}, [&](std::size_t q) { return remaining_share(q); }));
    }

private:
    double& mean(std::size_t i) const noexcept { return block_[cg_mean(i)]; }
    double& covariance(std::size_t i, std::size_t j) const noexcept { return block_[cg_covariance(i, j)]; }

    static constexpr double is_tail_now = -1;
    bool is_head(std::size_t i) const noexcept {
        return roles_[i] == cg_role::head && variances_[i] != is_tail_now;
    }
    bool is_tail(std::size_t i) const noexcept {
        return roles_[i] == cg_role::tail || (roles_[i] == cg_role::head && variances_[i] == is_tail_now);
    }

    double remaining_share(std::size_t q) const noexcept {
        if (!is_head(q)) return -1;
        return variances_[q] > 0 ? covariance(q, q) / variances_[q] : 0;
    }

    static void subtract(double& from, double subtracted) noexcept {
        from = sum_without_rounding(from, -subtracted);
    }

    void make_tail(std::size_t q) noexcept {
        const double variance = covariance(q, q);
        const bool is_explained = !(variance > rounding_share * variances_[q]);
        for (std::size_t h = 0; h < roles_.size(); ++h) {
            if (h == q || !is_head(h)) continue;
            const double coefficient = is_explained ? 0 : covariance(h, q) / variance;
            mean(h) -= coefficient * mean(q);
            for (std::size_t t = 0; t < roles_.size(); ++t)
                if (is_tail(t)) subtract(covariance(h, t), coefficient * covariance(q, t));
            for (std::size_t j = 0; j <= h; ++j)
                if (j != q && is_head(j)) subtract(covariance(h, j), coefficient * covariance(q, j));
        }
        for (std::size_t h = 0; h < roles_.size(); ++h)
            if (h != q && is_head(h)) covariance(h, q) = is_explained ? 0 : covariance(h, q) / variance;
        mean(q) = covariance(q, q) = 0;
        for (std::size_t t = 0; t < roles_.size(); ++t)
            if (is_tail(t)) covariance(q, t) = 0;
        variances_[q] = is_tail_now;
        for (std::size_t h = 0; h < roles_.size(); ++h)
            if (is_head(h) && !(covariance(h, h) > rounding_share * variances_[h])) forget_rounding(h);
    }

    void forget_rounding(std::size_t explained) noexcept {
        for (std::size_t j = 0; j < roles_.size(); ++j)
            if (is_head(j)) covariance(explained, j) = 0;
    }

    double* block_;
    std::span<const cg_role> roles_;
    double* variances_;
};

}  // namespace

void condition_block(double* block, std::span<const cg_role> roles, std::span<const std::size_t> positions,
                     double* variances) noexcept {
    block_conditioning(block, roles, variances).run(positions);
}

void condition_on(table& changed, std::span<const std::size_t> positions, const workers& allowed) {
    for (const std::size_t q : positions) require(changed.roles[q] == cg_role::head);
    const std::size_t nodes = changed.continuous_count();
    run_configurations(changed, changed.block_size() * (positions.size() + 1), nodes, allowed,
                       [&](std::size_t configuration, double* variances) noexcept {
                           condition_block(changed.moments.data() + configuration * changed.block_size(),
                                           changed.roles, positions, variances);
                       });
    for (const std::size_t q : positions) changed.roles[q] = cg_role::tail;
}

}  // namespace quarn
