#include "cg_marginals.h"

#include <cmath>

namespace quarn {
namespace {

class weak_reduction {
public:
    weak_reduction(const cg_plan& plan, const table& source, table& target) noexcept
        : plan_(plan), source_(source), target_(target), nodes_(target.continuous_count()) {}

    // One configuration of the target; `first` is the first one of the source that belongs to it.
    void operator()(std::size_t first, std::size_t result, double* differences) const noexcept {
        double* const moments = target_.moments.data() + result * target_.block_size();
        double& weight = target_.data[result];
        clear(moments);
        weight = 0;
        for_each_mixed(first, [&](double w, const double* block) noexcept {
            weight += w;
            for (std::size_t i = 0; i < nodes_; ++i)
                if (is_head(i)) moments[cg_mean(i)] += w * block[cg_mean(plan_.positions[i])];
        });
        if (!(weight > 0)) return;
        for (std::size_t i = 0; i < nodes_; ++i)
            if (is_head(i)) moments[cg_mean(i)] /= weight;
        for_each_mixed(first, [&](double w, const double* block) noexcept {
            add_spread(w, block, moments, differences);
        });
        for (std::size_t i = 0; i < nodes_; ++i)
            for (std::size_t j = 0; j <= i; ++j)
                if (is_head(i) && is_head(j)) moments[cg_covariance(i, j)] /= weight;
    }

private:
    bool is_head(std::size_t i) const noexcept { return target_.roles[i] == cg_role::head; }

    void clear(double* moments) const noexcept {
        for (std::size_t i = 0; i < nodes_; ++i) {
            if (!is_head(i)) continue;
            moments[cg_mean(i)] = 0;
            for (std::size_t j = 0; j <= i; ++j)
                if (is_head(j)) moments[cg_covariance(i, j)] = 0;
        }
    }

    template <class Visit>
    void for_each_mixed(std::size_t first, const Visit& visit) const noexcept {
        walk(plan_.loops.removed, first, 0, [&](std::size_t configuration, std::size_t) noexcept {
            if (const double w = source_.data[configuration]; w > 0)
                visit(w, source_.moments.data() + configuration * source_.block_size());
        });
    }

    void add_spread(double w, const double* block, double* moments, double* differences) const noexcept {
        for (std::size_t i = 0; i < nodes_; ++i) {
            if (!is_head(i)) continue;
            const std::size_t a = plan_.positions[i];
            const double mean = moments[cg_mean(i)];
            double& difference = differences[i];
            difference = block[cg_mean(a)] - mean;
            if (std::abs(difference) < rounding_share * std::abs(mean)) difference = 0;
            const double spread = difference * difference + block[cg_covariance(a, a)];
            if (spread <= 0) continue;
            moments[cg_covariance(i, i)] += w * spread;
            for (std::size_t j = 0; j < i; ++j)
                if (is_head(j))
                    moments[cg_covariance(i, j)] +=
                        w * (difference * differences[j] + block[cg_covariance(a, plan_.positions[j])]);
        }
    }

    const cg_plan& plan_;
    const table& source_;
    table& target_;
    std::size_t nodes_;
};

}  // namespace

void strong_marginal(const cg_plan& plan, const table& source, table& target, const workers& allowed) {
    const std::size_t nodes = target.continuous_count();
    run_kept(plan, target.block_size() + 1, 0, allowed,
             [&](std::size_t from, std::size_t to, double*) noexcept {
                 target.data[to] = source.data[from];
                 const double* const block = source.moments.data() + from * source.block_size();
                 double* const moments = target.moments.data() + to * target.block_size();
                 for (std::size_t i = 0; i < nodes; ++i) {
                     if (target.roles[i] != cg_role::head) continue;
                     moments[cg_mean(i)] = block[cg_mean(plan.positions[i])];
                     for (std::size_t k = 0; k < nodes; ++k)
                         if (target.roles[k] != cg_role::unknown)
                             moments[cg_covariance(i, k)] =
                                 block[cg_covariance(plan.positions[i], plan.positions[k])];
                 }
             });
}

void weak_marginal(const cg_plan& plan, const table& source, table& target, const workers& allowed) {
    const std::size_t nodes = target.continuous_count();
    run_kept(plan, target.block_size() + 1, nodes, allowed, weak_reduction(plan, source, target));
}

}  // namespace quarn
