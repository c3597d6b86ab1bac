// Links between nodes: adding, removing and switching parents, with the tables that follow.
#pragma once

#include "node.h"

namespace quarn {

void add_parent(node& child, node& parent);
// Keeps the slice of the child's tables at that state of a discrete parent.
void remove_parent(node& child, node& parent, std::size_t kept_state);
void switch_parent(node& child, node& old_parent, node& new_parent);

// The child's side of the removal of a link: cannot fail. The parent still lists the child.
void forget_parent(node& child, node& parent, std::size_t kept_state) noexcept;

}  // namespace quarn
