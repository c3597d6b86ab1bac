// The minimal separators of a graph: sets without which there are two components that are linked to all of the set.
#pragma once

#include "vertex_bits.h"

namespace quarn {

struct search_limits {
    std::size_t separators = 100000;  // at most so many; 0: nothing is searched
    std::size_t separator_size = 0;   // larger separators are ignored; 0: none are
};

struct found_separators {
    set_table sets;
    bool are_more = false;         // than the limit, or than the work allowed to find
    bool were_large_ones = false;  // ignored, together with all that is only found from them
};

found_separators find_minimal_separators(const bit_graph& connected, const search_limits& limits,
                                         search_work& work);

}  // namespace quarn
