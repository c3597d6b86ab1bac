// D-separation: which beliefs a change of belief at some nodes can reach, read off the links alone.
#pragma once

#include "domain.h"
#include "handle_list.h"

namespace quarn {

// Arrays of nodes that end with a null.
struct separation_query {
    node* const* sources;
    node* const* hard_evidence;
    node* const* soft_evidence;
};

enum class separation { connected, separated };

// The nodes of a domain that are connected to the sources given the evidence, or all others, in the domain's own list;
// the arrays asked for may be in that list. Fails with q_error_usage and q_error_invalid_evidence.
const handle_list<node>& nodes_by_separation(domain& asked, const separation_query& query, separation wanted);

}  // namespace quarn
