// How the steps of a loop are cut into slices, one for each thread.
#pragma once

#include <cstddef>

#include "workers.h"

namespace quarn {

// The number of slices for a loop of `count` steps, each of them `work` operations. Every thread gets at least the grain;
// 1 means that the calling thread does everything.
std::size_t slice_count(std::size_t count, std::size_t work, const workers& allowed) noexcept;

struct slice_range {
    std::size_t first;
    std::size_t count;
};

// Slice number `index` of `slices`: as many steps as any other, the first ones one step more where they do not divide
// evenly.
slice_range slice_of(std::size_t count, std::size_t slices, std::size_t index) noexcept;

}  // namespace quarn
