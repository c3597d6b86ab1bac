// The plan of one operation between two tables with continuous nodes, the smaller one over some of the nodes of the
// larger one: loops over the discrete configurations, and where the continuous nodes are found. What the blocks of
// moments hold is said in docs/cg-potentials.md.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "loop_levels.h"
#include "parallel.h"
#include "sizes.h"
#include "table.h"
#include "walk.h"

namespace quarn {

// Differences between numbers, and variances left of larger ones, are rounding when they are less than this share of what
// they were taken from.
constexpr double rounding_share = 450 * std::numeric_limits<double>::epsilon();

// A sum of which only rounding is left is 0, so that what does not vary together does not seem to.
inline double sum_without_rounding(double a, double b) noexcept {
    const double sum = a + b;
    return std::abs(sum) < rounding_share * std::max(std::abs(a), std::abs(b)) ? 0 : sum;
}

struct cg_plan {
    sectioned_levels loops;  // over discrete configurations
    std::vector<std::size_t>
        positions;  // for each continuous node of the smaller table, its position in the larger

    bool operator==(const cg_plan&) const = default;
};

cg_plan make_cg_plan(const table& larger, const table& smaller);

// Calls run(configuration of the larger table, of the smaller one, scratch) for each configuration of the smaller table
// and the first one of the larger table that belongs to it; the others are reached through loops.removed. Spread over
// threads as far as allowed; `work` is what is done for each configuration of the larger table, in operations.
template <class Run>
void run_kept(const cg_plan& plan, std::size_t work, std::size_t scratch, const workers& allowed,
              const Run& run) {
    const std::span<const loop_level> kept(plan.loops.kept);
    if (kept.empty())
        return run_slices(1, 1, scratch, [&](slice_range, double* numbers) noexcept { run(0, 0, numbers); });
    const loop_level outermost = kept.front();
    const std::size_t inside = saturating_product(steps(kept.subspan(1)), steps(plan.loops.removed));
    const std::size_t each = saturating_product(inside, work);
    const std::size_t slices = slice_count(outermost.count, each, allowed);
    run_slices(outermost.count, slices, scratch, [&](slice_range range, double* numbers) noexcept {
        for (std::size_t step = range.first; step < range.first + range.count; ++step)
            walk(kept.subspan(1), step * outermost.larger, step * outermost.smaller,
                 [&](std::size_t larger, std::size_t smaller) noexcept { run(larger, smaller, numbers); });
    });
}

// The same for every configuration of one table: run(configuration, scratch).
template <class Run>
void run_configurations(const table& each, std::size_t work, std::size_t scratch, const workers& allowed,
                        const Run& run) {
    run_slices(each.size, slice_count(each.size, work, allowed), scratch,
               [&](slice_range range, double* numbers) noexcept {
                   for (std::size_t i = range.first; i < range.first + range.count; ++i) run(i, numbers);
               });
}

}  // namespace quarn
