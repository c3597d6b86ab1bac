#include "slices.h"

#include <algorithm>

namespace quarn {

std::size_t slice_count(std::size_t count, std::size_t work, const workers& allowed) noexcept {
    if (allowed.level < 2 || count == 0 || work == 0) return 1;
    const std::size_t least_steps = allowed.grain / work + (allowed.grain % work != 0);
    if (count < least_steps) return 1;
    return std::max<std::size_t>(1, std::min(allowed.level, count / std::max<std::size_t>(1, least_steps)));
}

slice_range slice_of(std::size_t count, std::size_t slices, std::size_t index) noexcept {
    const std::size_t each = count / slices, longer = count % slices;
    return {index * each + std::min(index, longer), each + (index < longer)};
}

}  // namespace quarn
