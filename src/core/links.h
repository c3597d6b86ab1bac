// Links between nodes: adding, removing and switching parents, with the tables and models that follow.
#pragma once

#include <span>

#include "family_tables.h"
#include "node.h"

namespace quarn {

void add_parent(node& child, node& parent);
// Keeps the slice of the child's tables, and of its model, at that state of a discrete parent. Can only fail where the
// model refers to the parent.
void remove_parent(node& child, node& parent, std::size_t kept_state);
// Where the potentials of a chain component take the new parent, it becomes one of all members that share them.
void switch_parent(node& child, node& old_parent, node& new_parent);

// Links from each parent to each child, where there is none yet, in two steps: making room, which can fail and changes
// nothing, and the commitment, which cannot fail. The tables of the children follow. Whether the links may be is not asked.
class prepared_links {
public:
    prepared_links(std::span<node* const> children, std::span<node* const> parents);
    void commit() noexcept;

private:
    prepared_tables tables_;
    std::vector<prepared_append<node>> appended_;
    std::vector<std::pair<node*, node*>> links_;  // parent, child
};

// The child's side of the removal of a link, but for its model: cannot fail. The parent still lists the child.
void forget_parent(node& child, node& parent, std::size_t kept_state) noexcept;

}  // namespace quarn
