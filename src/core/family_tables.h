// All tables over a node: its own, those of its children, and potentials of chain components; the models over it; and
// changes of several tables that happen together or not at all.
#pragma once

#include <utility>
#include <vector>

#include "chain_component.h"
#include "node.h"
#include "table.h"

namespace quarn {

template <class Visit>
void for_each_table_of(node& owner, Visit&& visit) {
    for (table* owned : {owner.own_table.get(), owner.experience.get(), owner.fading.get()})
        if (owned != nullptr) visit(*owned);
}

// Each once, however many children of the node share it.
template <class Visit>
void for_each_potential_over(node& asked, Visit&& visit) {
    const uint64_t mark = asked.domain->new_mark();
    const auto visit_those_of = [&](chain_component* joined) {
        if (joined == nullptr || joined->mark == mark) return;
        joined->mark = mark;
        for (const std::unique_ptr<table>& potential : joined->potentials)
            if (potential->nodes.contains(&asked)) visit(*potential);
    };
    visit_those_of(asked.component);
    for (const node* child : asked.children) visit_those_of(child->component);
}

template <class Visit>
void for_each_family_table(node& parent, Visit&& visit) {
    for_each_table_of(parent, visit);
    for (node* child : parent.children) for_each_table_of(*child, visit);
    for_each_potential_over(parent, visit);
}

// The potentials that a member of a component shares, over one of its parents.
template <class Visit>
void for_each_potential_over(node& member, const node& parent, Visit&& visit) {
    if (member.component == nullptr) return;
    for (const std::unique_ptr<table>& potential : member.component->potentials)
        if (potential->nodes.contains(&member) && potential->nodes.contains(&parent)) visit(*potential);
}

// The models of children that the node is a model node of.
template <class Visit>
void for_each_model_over(const node& parent, Visit&& visit) {
    for (const node* child : parent.children)
        if (child->model && child->model->nodes.contains(&parent)) visit(*child->model);
}

inline void family_tables_changed(node& parent) noexcept {
    parent.table_changed();
    for (node* child : parent.children) child->table_changed();
}

// New shapes of tables, all made before the first is put in place.
class prepared_tables {
public:
    void add(table& target, table&& prepared) { prepared_.emplace_back(&target, std::move(prepared)); }
    void commit() noexcept {
        for (auto& [target, prepared] : prepared_) quarn::commit(*target, std::move(prepared));
    }

private:
    std::vector<std::pair<table*, table>> prepared_;
};

}  // namespace quarn
