// How far one operation on tables may be spread over threads; a setting of the domain.
#pragma once

#include <cstddef>

namespace quarn {

struct workers {
    std::size_t level = 1;      // the largest number of threads; 1: everything runs in the calling thread
    std::size_t grain = 10000;  // the least work, in operations on entries, that a thread is started for
};

}  // namespace quarn
