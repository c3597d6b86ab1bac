// What the caller has settled about compiling a domain. It stays when the domain is uncompiled.
#pragma once

#include "handle_list.h"

struct q_node;

namespace quarn {

struct compile_settings {
    // The orders are of other nodes than the domain now has.
    void forget_orders() noexcept {
        initial_order.clear();
        found_order.clear();
    }

    handle_list<q_node> excluded;  // discrete nodes that are always instantiated, so never in a clique
    handle_list<q_node>
        initial_order;  // an elimination order to begin the search for a better one with; or empty
    handle_list<q_node> found_order;  // of the last triangulation, or empty
    std::size_t max_separators = 100000;
    std::size_t max_separator_size = 0;  // 0: no limit
};

}  // namespace quarn
