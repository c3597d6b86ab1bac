// Triangulating and compiling domains, and what the caller can settle about it.
#pragma once

#include "domain.h"
#include "quarn.h"

namespace quarn {

// On failure the domain is left uncompiled.
void triangulate(domain& changed, q_triangulation_method_t method);
void triangulate(domain& changed, const q_node_t* order);
void compile(domain& changed);

void set_initial_triangulation(domain& changed, const q_node_t* order);
void set_excluded_nodes(domain& changed, const q_node_t* nodes);
const q_node_t* elimination_order(const domain& asked);

}  // namespace quarn
