// All tables over a node: its own and those of its children; and changes of several of them that happen together or
// not at all.
#pragma once

#include <utility>
#include <vector>

#include "node.h"
#include "table.h"

namespace quarn {

template <class Visit>
void for_each_table_of(node& owner, Visit&& visit) {
    for (table* owned : {owner.own_table.get(), owner.experience.get(), owner.fading.get()})
        if (owned != nullptr) visit(*owned);
}

template <class Visit>
void for_each_family_table(node& parent, Visit&& visit) {
    for_each_table_of(parent, visit);
    for (node* child : parent.children) for_each_table_of(*child, visit);
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
