#include "loop_plan.h"

#include <algorithm>

#include "sizes.h"

namespace quarn {
namespace {

// Stride of a node in a table over `nodes`; 0 when it is not in it.
std::size_t stride_of(const node* member, std::span<node* const> nodes) noexcept {
    const auto place = std::ranges::find(nodes, member);
    if (place == nodes.end()) return 0;
    return configurations(nodes.subspan(static_cast<std::size_t>(place - nodes.begin()) + 1));
}

// Whether a step of the outer level is a whole round of the inner one, in both tables.
bool can_merge(const loop_level& outer, const loop_level& inner) noexcept {
    return outer.stride == inner.count * inner.stride &&
           outer.source_stride == inner.count * inner.source_stride;
}

}  // namespace

loop_plan make_loop_plan(std::span<node* const> nodes, std::span<node* const> source) {
    loop_plan plan;
    std::size_t stride = configurations(nodes);
    for (const node* member : nodes) {
        stride /= member->state_count;
        if (member->state_count == 1) continue;
        const loop_level level{member->state_count, stride, stride_of(member, source)};
        if (!plan.levels.empty() && can_merge(plan.levels.back(), level))
            plan.levels.back() = {plan.levels.back().count * level.count, level.stride, level.source_stride};
        else
            plan.levels.push_back(level);
    }
    if (plan.levels.empty()) plan.levels.push_back({1, 1, 0});
    return plan;
}

}  // namespace quarn
