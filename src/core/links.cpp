#include "links.h"

#include <algorithm>
#include <cstring>
#include <optional>

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

// Prepares the tables of a child that gets these parents.
void widen_tables(prepared_tables& tables, node& child, std::span<node* const> added) {
    if (child.is_function()) return;
    const auto widen = [&](const std::unique_ptr<table>& target, bool by_continuous_nodes) {
        if (!target) return;
        std::optional<table> wider;
        for (node* parent : added)
            if (parent->is_discrete() || (by_continuous_nodes && parent->is_continuous()))
                wider.emplace(with_node(wider ? *wider : *target, *parent, cg_role::tail));
        if (wider) tables.add(*target, *std::move(wider));
    };
    widen(child.own_table, true);
    widen(child.experience, false);
    widen(child.fading, false);
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

prepared_links::prepared_links(std::span<node* const> children, std::span<node* const> parents) {
    const auto is_new = [](const node& child, const node& parent) {
        return !child.parents.contains(&parent);
    };
    for (node* parent : parents) {
        std::vector<node*> added;
        for (node* child : children)
            if (is_new(*child, *parent)) added.push_back(child);
        for (node* child : added) links_.emplace_back(parent, child);
        if (!added.empty()) appended_.emplace_back(parent->children, std::move(added));
    }
    for (node* child : children) {
        std::vector<node*> added;
        for (node* parent : parents)
            if (is_new(*child, *parent)) added.push_back(parent);
        if (added.empty()) continue;
        widen_tables(tables_, *child, added);
        appended_.emplace_back(child->parents, std::move(added));
    }
}

void prepared_links::commit() noexcept {
    tables_.commit();
    for (prepared_append<node>& appended : appended_) appended.commit();
    for (const auto& [parent, child] : links_) {
        child->domain->counts.add_link(parent->category, child->category);
        child->domain->sampling.reset();
        if (child->is_function()) continue;
        child->table_changed();
        child->domain->structure_changed();
    }
}

void add_parent(node& child, node& parent) {
    require_linkable(child, parent, nullptr);
    node *const children[]{&child}, *const parents[]{&parent};
    prepared_links(children, parents).commit();
}

void forget_parent(node& child, node& parent, std::size_t kept_state) noexcept {
    child.parents.remove(&parent);
    child.domain->counts.remove_link(parent.category, child.category);
    child.domain->sampling.reset();
    if (child.is_function() || !parent.has_kind()) return;  // no table has the parent
    const auto remove = [&](table& affected) { remove_node(affected, parent, kept_state); };
    for_each_table_of(child, remove);
    for_each_potential_over(child, parent, remove);
    child.table_changed();
    child.domain->structure_changed();
}

void remove_parent(node& child, node& parent, std::size_t kept_state) {
    require(child.parents.contains(&parent));
    if (child.model) prepared_removal(*child.model, parent, kept_state).commit();
    parent.children.remove(&child);
    forget_parent(child, parent, kept_state);
}

void switch_parent(node& child, node& old_parent, node& new_parent) {
    require(child.parents.contains(&old_parent));
    require_linkable(child, new_parent, &old_parent);
    require(is_interchangeable(old_parent, new_parent));
    node* const added[]{&new_parent};
    std::vector<node*> new_children{&child};
    std::vector<prepared_append<node>> appended;
    prepared_tables tables;
    for_each_potential_over(child, old_parent, [&](const table& shared) {
        for (node* member : shared.nodes) {
            if (member->component != child.component || member->parents.contains(&new_parent) ||
                std::ranges::find(new_children, member) != new_children.end())
                continue;
            new_children.push_back(member);
            appended.emplace_back(member->parents, &new_parent);
            widen_tables(tables, *member, added);
        }
    });
    appended.emplace_back(new_parent.children, new_children);

    const auto replace = [&](table& affected) { replace_node(affected, old_parent, new_parent); };
    for_each_potential_over(child, old_parent, replace);
    for_each_table_of(child, replace);
    tables.commit();
    child.parents.replace(child.parents.index_of(&old_parent), &new_parent);
    old_parent.children.remove(&child);
    for (prepared_append<node>& more : appended) more.commit();
    if (child.model) replace_node(*child.model, old_parent, new_parent);
    for (node* linked : new_children) linked->table_changed();
    for (std::size_t more = 1; more < new_children.size(); ++more)
        child.domain->counts.add_link(new_parent.category, child.category);
    child.domain->structure_changed();
}

}  // namespace quarn
