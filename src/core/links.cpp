#include "links.h"

#include <cstring>

#include "ancestry.h"
#include "errors.h"
#include "family_tables.h"
#include "functional_dependency.h"
#include "states.h"

namespace quarn {
namespace {

// What any new link must satisfy, whether it is added or takes the place of the link from `replaced`.
void require_linkable(node& child, node& parent, const node* replaced) {
    require(child.domain == parent.domain);
    require(&child != &parent, q_error_cyclic_network);
    require(!child.parents.contains(&parent));
    if (!child.is_function()) {
        require(!parent.is_utility());
        require(!(child.is_discrete() && parent.is_continuous()));
    }
    require(!link_closes_cycle(child, parent), q_error_cyclic_network);
    require_no_functional_dependency(parent, child, replaced);
}

prepared_tables tables_with_parent(node& child, node& parent) {
    prepared_tables tables;
    if (child.is_function() || !parent.has_kind()) return tables;
    const auto add = [&](std::unique_ptr<table>& target) {
        if (target) tables.add(*target, with_node(*target, parent, cg_role::tail));
    };
    add(child.own_table);
    if (parent.is_discrete()) {
        add(child.experience);
        add(child.fading);
    }
    return tables;
}

bool same_states(const node& a, const node& b) noexcept {
    if (a.state_count != b.state_count || a.subtype != b.subtype) return false;
    if (a.subtype == q_subtype_boolean) return true;
    if (a.has_values()) return a.state_values == b.state_values;
    if (a.state_labels.empty() && b.state_labels.empty()) return true;
    for (std::size_t state = 0; state < a.state_count; ++state)
        if (std::strcmp(state_label(a, state), state_label(b, state)) != 0) return false;
    return true;
}

bool is_interchangeable(const node& a, const node& b) noexcept {
    return a.category == b.category && a.kind == b.kind && (!a.is_discrete() || same_states(a, b));
}

}  // namespace

void add_parent(node& child, node& parent) {
    require_linkable(child, parent, nullptr);
    prepared_tables tables = tables_with_parent(child, parent);
    prepared_append new_parent(child.parents, &parent);
    prepared_append new_child(parent.children, &child);

    tables.commit();
    new_parent.commit();
    new_child.commit();
    child.domain->counts.add_link(parent.category, child.category);
    if (child.is_function()) return;
    child.table_changed();
    child.domain->uncompile();
}

void forget_parent(node& child, node& parent, std::size_t kept_state) noexcept {
    child.parents.remove(&parent);
    child.domain->counts.remove_link(parent.category, child.category);
    if (child.is_function() || !parent.has_kind()) return;  // no table has the parent
    for_each_table_of(child, [&](table& affected) { remove_node(affected, parent, kept_state); });
    child.table_changed();
    child.domain->uncompile();
}

void remove_parent(node& child, node& parent, std::size_t kept_state) {
    require(child.parents.contains(&parent));
    parent.children.remove(&child);
    forget_parent(child, parent, kept_state);
}

void switch_parent(node& child, node& old_parent, node& new_parent) {
    require(child.parents.contains(&old_parent));
    require_linkable(child, new_parent, &old_parent);
    require(is_interchangeable(old_parent, new_parent));
    prepared_append new_child(new_parent.children, &child);

    child.parents.replace(child.parents.index_of(&old_parent), &new_parent);
    old_parent.children.remove(&child);
    new_child.commit();
    for_each_table_of(child, [&](table& affected) { replace_node(affected, old_parent, new_parent); });
    child.table_changed();
    child.domain->uncompile();
}

}  // namespace quarn
