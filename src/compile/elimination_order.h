// Elimination orders that callers give.
#pragma once

#include "domain.h"
#include "handle_list.h"
#include "quarn.h"

namespace quarn {

// How many nodes an elimination order has: those with a kind that are not excluded.
std::size_t elimination_count(const domain& asked) noexcept;

// The nodes of a null-terminated list that is a valid elimination order: all discrete and continuous nodes of the domain
// that are not excluded, each once, continuous before discrete. Anything else is q_error_enumeration.
handle_list<node> checked_elimination_order(domain& asked, const q_node_t* order);

}  // namespace quarn
