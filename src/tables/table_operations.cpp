#include "table_operations.h"

#include <algorithm>
#include <array>

#include "kernels.h"
#include "parallel.h"
#include "sizes.h"
#include "tile_kernels.h"
#include "walk.h"

namespace quarn {
namespace {

// All levels have two steps or more, so there are not more than a size has bits.
constexpr std::size_t most_levels = 64;

// --- Walking.

// What a slice of an operation goes through: a plan, or a range of the steps of one of its levels.
struct part {
    std::span<const loop_level> outer;
    tile_view tile;
    std::size_t larger;  // where it starts
    std::size_t smaller;
};

part whole(const loop_plan& plan) noexcept { return {plan.outer, tile_view(plan.tile), plan.start, 0}; }

// As walk(), with the first step only of levels that the smaller table does not have.
template <class Run>
void walk_kept(std::span<const loop_level> levels, std::size_t larger, std::size_t smaller,
               const Run& run) noexcept {
    if (levels.empty()) return run(larger, smaller);
    const loop_level level = levels.front();
    for (std::size_t step = 0; step < (level.kept() ? level.count : 1); ++step) {
        walk_kept(levels.subspan(1), larger, smaller, run);
        larger += level.larger;
        smaller += level.smaller;
    }
}

// --- Slicing.

// The level whose steps are dealt out: one outside the tile, or the kept level of the tile (at the end of those).
struct cut {
    std::size_t level;
    std::size_t count;
    std::size_t slices;
};

enum class split_at { any_level, kept_level };

cut cut_of(const loop_plan& plan, split_at where, std::size_t extra_work, const workers& allowed) noexcept {
    const auto outermost = std::ranges::find_if(
        plan.outer, [&](const loop_level& level) { return where == split_at::any_level || level.kept(); });
    cut result{static_cast<std::size_t>(outermost - plan.outer.begin()), 1, 1};
    result.count = outermost == plan.outer.end() ? plan.tile.kept.count : outermost->count;
    if (plan.smaller_size == 1) return result;
    const std::size_t work = saturating_product(extra_work + 1, plan.larger_size / result.count);
    result.slices = slice_count(result.count, work, allowed);
    return result;
}

// The part of a plan that has a range of the steps of one level only; keeps the levels that the part points to.
struct sliced_part {
    sliced_part(const loop_plan& plan, std::size_t level, slice_range steps) noexcept : range(whole(plan)) {
        if (level < plan.outer.size()) {
            std::ranges::copy(plan.outer, levels.begin());
            levels[level].count = steps.count;
            range.outer = {levels.data(), plan.outer.size()};
            range.larger += steps.first * levels[level].larger;
            range.smaller += steps.first * levels[level].smaller;
            return;
        }
        range.tile.kept.count = steps.count;
        range.larger += steps.first * range.tile.kept.larger;
        range.smaller += steps.first * range.tile.kept.smaller;
        if (plan.tile.kind == tile_kind::scattered) range.tile.kept_positions += steps.first;
    }
    sliced_part(const sliced_part&) = delete;
    sliced_part& operator=(const sliced_part&) = delete;

    part range;
    std::array<loop_level, most_levels> levels;
};

// Calls run(part) for everything, or for a part in each of several threads.
template <class Run>
void run_parts(const loop_plan& plan, split_at where, std::size_t extra_work, const workers& allowed,
               const Run& run) {
    if (allowed.level < 2) return run(whole(plan));
    const cut dealt = cut_of(plan, where, extra_work, allowed);
    if (dealt.slices < 2) return run(whole(plan));
    run_slices(dealt.count, dealt.slices, 0, [&](slice_range steps, double*) noexcept {
        run(sliced_part(plan, dealt.level, steps).range);
    });
}

// --- The operations.

void apply(const apply_kernels& kernels, const loop_plan& plan, double* larger, const double* smaller,
           const workers& allowed) {
    const apply_kernel kernel = kernels[plan.tile.kind];
    run_parts(plan, split_at::any_level, 0, allowed, [=](const part& range) noexcept {
        walk(range.outer, range.larger, range.smaller,
             [&](std::size_t at, std::size_t by) noexcept { kernel(range.tile, larger + at, smaller + by); });
    });
}

// The kernels of a reduction: for the start, and then for all entries, the first ones once more; null when those were all.
struct reduction {
    reduce_kernel start;
    reduce_kernel all;
};

bool removes_nothing(const loop_plan& plan) noexcept { return plan.larger_size == plan.smaller_size; }

reduction summing(const loop_plan& plan, const reduce_kernels& first, const reduce_kernels& sum) noexcept {
    if (removes_nothing(plan)) return {first[plan.tile.kind], nullptr};
    return {tile_kernels().clear[plan.tile.kind], sum[plan.tile.kind]};
}

reduction maximising(const loop_plan& plan, const reduce_kernels& first,
                     const reduce_kernels& maximum) noexcept {
    return {first[plan.tile.kind], removes_nothing(plan) ? nullptr : maximum[plan.tile.kind]};
}

// `second` is null where there is no second table.
void reduce_part(const part& range, const reduction& by, const double* larger, const double* second,
                 double* smaller) noexcept {
    const auto with = [&](reduce_kernel kernel) noexcept {
        return [&, kernel](std::size_t at, std::size_t into) noexcept {
            kernel(range.tile, {larger + at, second == nullptr ? nullptr : second + at, nullptr, 1},
                   smaller + into);
        };
    };
    walk_kept(range.outer, range.larger, range.smaller, with(by.start));
    if (by.all != nullptr) walk(range.outer, range.larger, range.smaller, with(by.all));
}

void reduce(const loop_plan& plan, const reduction& by, const double* larger, double* smaller,
            const workers& allowed) {
    run_parts(plan, split_at::kept_level, 0, allowed,
              [&](const part& range) noexcept { reduce_part(range, by, larger, nullptr, smaller); });
}

// The weights of the states of removed nodes, laid out for a walk. The tile has those of a single node as they are, or
// the products of those of several.
class laid_out_weights {
public:
    laid_out_weights(const weighted_plan& plan, state_weights weights) noexcept {
        for (const removed_node& node : plan.one_state_nodes)
            if (weights[node.number] != nullptr) constant_ *= weights[node.number][0];
        auto outer = plan.outer_nodes.begin();
        for (std::size_t i = 0; i < plan.loops.outer.size(); ++i)
            of_level_[i] = plan.loops.outer[i].kept() ? nullptr : weights[outer++->number];
        const auto is_weighted = [&](const removed_node& node) { return weights[node.number] != nullptr; };
        if (std::ranges::none_of(plan.tile_nodes, is_weighted)) return;
        of_tile_ = plan.tile_nodes.size() == 1 ? weights[plan.tile_nodes.front().number] : products_.data();
        if (of_tile_ == products_.data()) multiply_out(plan.tile_nodes, weights);
    }
    laid_out_weights(const laid_out_weights&) = delete;
    laid_out_weights& operator=(const laid_out_weights&) = delete;

    double constant() const noexcept { return constant_; }
    const double* of_tile() const noexcept { return of_tile_; }
    const double* const* of_levels() const noexcept { return of_level_.data(); }

private:
    void multiply_out(std::span<const removed_node> nodes, state_weights weights) noexcept {
        products_[0] = 1;
        std::size_t count = 1;
        for (const removed_node& node : nodes) {
            const double* const of_node = weights[node.number];
            for (std::size_t i = count; i-- > 0;)
                for (std::size_t state = node.states; state-- > 0;)
                    products_[i * node.states + state] =
                        products_[i] * (of_node == nullptr ? 1 : of_node[state]);
            count *= node.states;
        }
    }

    double constant_ = 1;
    const double* of_tile_ = nullptr;
    std::array<const double*, most_levels> of_level_;
    std::array<double, largest_list> products_;
};

// As walk() and walk_kept(), with the product of the weights on the way as a further argument.
template <class Run>
void walk_weighted(std::span<const loop_level> levels, const double* const* weights, std::size_t larger,
                   std::size_t smaller, double weight, bool kept_only, const Run& run) noexcept {
    if (levels.empty()) return run(larger, smaller, weight);
    const loop_level level = levels.front();
    for (std::size_t step = 0; step < (level.kept() || !kept_only ? level.count : 1); ++step) {
        walk_weighted(levels.subspan(1), weights + 1, larger, smaller,
                      *weights == nullptr ? weight : weight * (*weights)[step], kept_only, run);
        larger += level.larger;
        smaller += level.smaller;
    }
}

void reduce_weighted(const weighted_plan& plan, const reduction& by, const double* larger,
                     state_weights given, double* smaller, const workers& allowed) {
    const laid_out_weights weights(plan, given);
    run_parts(plan.loops, split_at::kept_level, 1, allowed, [&](const part& range) noexcept {
        const auto go = [&](reduce_kernel kernel, bool kept_only) noexcept {
            walk_weighted(
                range.outer, weights.of_levels(), range.larger, range.smaller, weights.constant(), kept_only,
                [&](std::size_t at, std::size_t into, double weight) noexcept {
                    kernel(range.tile, {larger + at, nullptr, weights.of_tile(), weight}, smaller + into);
                });
        };
        go(by.start, true);
        if (by.all != nullptr) go(by.all, false);
    });
}

}  // namespace

void multiply(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed) {
    apply(tile_kernels().multiply, plan, larger, smaller, allowed);
}

void divide(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed) {
    const bool only_positive = plan.one_to_one || plan.smaller_size == 1;
    apply(only_positive ? tile_kernels().divide_if_positive : tile_kernels().divide_unless_zero, plan, larger,
          smaller, allowed);
}

void add(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed) {
    apply(tile_kernels().add, plan, larger, smaller, allowed);
}

void expand(const loop_plan& plan, double* larger, const double* smaller, const workers& allowed) {
    apply(tile_kernels().assign, plan, larger, smaller, allowed);
}

void sum_marginal(const loop_plan& plan, const double* larger, double* smaller, const workers& allowed) {
    const tile_kernel_set& kernels = tile_kernels();
    reduce(plan, summing(plan, kernels.first, kernels.sum), larger, smaller, allowed);
}

void max_marginal(const loop_plan& plan, const double* larger, double* smaller, const workers& allowed) {
    const tile_kernel_set& kernels = tile_kernels();
    reduce(plan, maximising(plan, kernels.first, kernels.maximum), larger, smaller, allowed);
}

void out_sum_marginal(const weighted_plan& plan, const double* larger, state_weights weights, double* smaller,
                      const workers& allowed) {
    const tile_kernel_set& kernels = tile_kernels();
    reduce_weighted(plan, summing(plan.loops, kernels.first_weighted, kernels.weighted_sum), larger, weights,
                    smaller, allowed);
}

void out_max_marginal(const weighted_plan& plan, const double* larger, state_weights weights, double* smaller,
                      const workers& allowed) {
    const tile_kernel_set& kernels = tile_kernels();
    reduce_weighted(plan, maximising(plan.loops, kernels.first_weighted, kernels.weighted_maximum), larger,
                    weights, smaller, allowed);
}

void pair_marginal(const loop_plan& plan, const double* probability, const double* utility,
                   double* smaller_probability, double* smaller_utility, const workers& allowed) {
    const tile_kernel_set& kernels = tile_kernels();
    const reduction sum = summing(plan, kernels.first, kernels.sum);
    const reduction weighted_sum = summing(plan, kernels.first_product, kernels.product_sum);
    run_parts(plan, split_at::kept_level, 2, allowed, [&](const part& range) noexcept {
        reduce_part(range, sum, probability, nullptr, smaller_probability);
        reduce_part(range, weighted_sum, probability, utility, smaller_utility);
    });
    divide_by_weights(smaller_utility, smaller_probability, plan.smaller_size);
}

}  // namespace quarn
