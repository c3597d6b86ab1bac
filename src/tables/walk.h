// Goes through nested loops.
#pragma once

#include <cstddef>
#include <span>

#include "loop_levels.h"

namespace quarn {

// Calls run(position in the larger table, position in the smaller one) for each step of the innermost level. As deep as
// there are levels: no more than a size has bits, when levels of one step have been dropped.
template <class Run>
void walk(std::span<const loop_level> levels, std::size_t larger, std::size_t smaller,
          const Run& run) noexcept {
    if (levels.empty()) return run(larger, smaller);
    const loop_level level = levels.front();
    for (std::size_t step = 0; step < level.count; ++step) {
        walk(levels.subspan(1), larger, smaller, run);
        larger += level.larger;
        smaller += level.smaller;
    }
}

}  // namespace quarn
