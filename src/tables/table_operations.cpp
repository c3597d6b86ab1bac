#include "table_operations.h"

#include <algorithm>

#include "kernels.h"

namespace quarn {
namespace {

// Goes through the levels of a plan and calls run(larger, smaller, innermost level) for each innermost run. As deep as
// the plan has levels: at most as many as a size has bits.
template <class Larger, class Smaller, class Run>
void walk(const loop_level* level, const loop_level* innermost, Larger* larger, Smaller* smaller,
          const Run& run) noexcept {
    if (level == innermost) return run(larger, smaller, *level);
    for (std::size_t step = 0; step < level->count; ++step) {
        walk(level + 1, innermost, larger, smaller, run);
        larger += level->stride;
        smaller += level->source_stride;
    }
}

}  // namespace

void multiply(const loop_plan& plan, double* larger, const double* smaller) noexcept {
    walk(plan.levels.data(), &plan.levels.back(), larger, smaller,
         [](double* target, const double* source, const loop_level& level) noexcept {
             multiply_run(target, level.stride, source, level.source_stride, level.count);
         });
}

void sum_marginal(const loop_plan& plan, const double* larger, double* smaller,
                  std::size_t smaller_size) noexcept {
    std::fill_n(smaller, smaller_size, 0.0);
    walk(plan.levels.data(), &plan.levels.back(), larger, smaller,
         [](const double* source, double* result, const loop_level& level) noexcept {
             add_run(result, level.source_stride, source, level.stride, level.count);
         });
}

}  // namespace quarn
