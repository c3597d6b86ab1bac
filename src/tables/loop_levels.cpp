#include "loop_levels.h"

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

}  // namespace

loop_levels make_levels(std::span<node* const> nodes, std::span<node* const> smaller) {
    loop_levels levels;
    levels.reserve(nodes.size());
    std::size_t stride = configurations(nodes);
    for (const node* member : nodes) {
        stride /= member->state_count;
        levels.push_back({member->state_count, stride, stride_of(member, smaller)});
    }
    return levels;
}

std::size_t simplify(loop_levels& levels, std::span<const std::ptrdiff_t> fixed) {
    std::size_t start = 0;
    auto next = fixed.begin();
    std::erase_if(levels, [&](const loop_level& level) {
        const std::ptrdiff_t state = *next++;
        if (state == not_fixed || level.kept()) return false;
        start += static_cast<std::size_t>(state) * level.larger;
        return true;
    });
    return start;
}

bool is_one_to_one(const loop_levels& levels) noexcept {
    const auto innermost = std::find_if(levels.rbegin(), levels.rend(), [](const loop_level& level) {
        return level.count > 1 || level.kept();
    });
    return innermost != levels.rend() && innermost->kept();
}

bool can_merge(const loop_level& outer, const loop_level& inner) noexcept {
    return outer.larger == inner.count * inner.larger && outer.smaller == inner.count * inner.smaller;
}

void compress(loop_levels& levels) {
    std::erase_if(levels, [](const loop_level& level) { return level.count == 1; });
    auto last = levels.begin();
    for (auto next = levels.begin(); next != levels.end(); ++next) {
        if (next == levels.begin()) continue;
        if (can_merge(*last, *next))
            *last = {last->count * next->count, next->larger, next->smaller};
        else
            *++last = *next;
    }
    if (!levels.empty()) levels.erase(last + 1, levels.end());
}

sectioned_levels by_section(const loop_levels& levels) {
    sectioned_levels sections;
    for (const loop_level& level : levels) (level.kept() ? sections.kept : sections.removed).push_back(level);
    compress(sections.kept);
    compress(sections.removed);
    return sections;
}

std::size_t steps(std::span<const loop_level> levels) noexcept {
    std::size_t product = 1;
    for (const loop_level& level : levels) product = saturating_product(product, level.count);
    return product;
}

}  // namespace quarn
