#include "node.h"

#include <array>
#include <charconv>
#include <cstring>

#include "errors.h"
#include "functional_dependency.h"
#include "links.h"
#include "names.h"
#include "user_data.h"

using namespace quarn;

q_node::q_node(q_domain& owner, q_category_t of_category, q_kind_t of_kind, q_subtype_t of_subtype)
    : domain(&owner),
      category(of_category),
      kind(of_kind),
      subtype(of_subtype),
      state_count(of_subtype == q_subtype_boolean ? 2 : 1) {}

q_node::~q_node() = default;

void q_node::table_changed() noexcept {
    table_is_valid = false;
    if (domain->compiled) domain->compiled->table_changed(*this);
}

namespace quarn {

void require_admissible(domain& owner, q_category_t category, q_kind_t kind) {
    if (category == q_category_function) return;
    const bool decides = category != q_category_chance;
    if (decides || owner.counts.decisions_and_utilities() > 0)
        require(kind != q_kind_continuous && owner.counts.continuous == 0, q_error_cg_limids_not_supported);
    if (decides && owner.counts.functions() > 0 && owner.counts.decisions_and_utilities() == 0)
        require(!functions_influence_variables(owner), q_error_cyclic_functional_dependency);
}

q_kind_t kind_for(q_category_t category, q_kind_t kind) {
    switch (category) {
    case q_category_utility: return q_kind_other;
    case q_category_chance:
    case q_category_decision: require(kind == q_kind_discrete || kind == q_kind_continuous); return kind;
    case q_category_function: require(kind == q_kind_discrete || kind == q_kind_other); return kind;
    default: throw failure(q_error_usage);
    }
}

node& create_node(domain& owner, q_category_t category, q_kind_t kind, q_subtype_t subtype) {
    require_admissible(owner, category, kind);
    node& created = *new node(owner, category, kind, subtype);
    owner.link(created);
    if (!created.is_real_function()) owner.structure_changed();
    return created;
}

void set_category(node& changed, q_category_t category) {
    require(category == q_category_chance || category == q_category_decision);
    if (changed.is(category)) return;
    require(changed.is_discrete() && !changed.is_function() && !changed.experience && !changed.fading &&
            changed.component == nullptr);
    if (category == q_category_decision) require_admissible(*changed.domain, category, changed.kind);
    node_counts& counts = changed.domain->counts;
    --counts.of_category(changed.category);
    ++counts.of_category(category);
    changed.category = category;
    changed.domain->structure_changed();
}

void set_node_name(node& named, const char* name) {
    if (named.name && std::strcmp(named.name.get(), name) == 0) return;
    name_index& names = named.domain->names;
    require(names.find(*named.domain, name) == nullptr, q_error_twice);
    require(is_compound_name(name), q_error_invalid_name);
    text copy = duplicate_string(name);
    names.remove(named);
    named.name = std::move(copy);
    names.add(named);
}

namespace {

char category_letter(q_category_t category) noexcept {
    switch (category) {
    case q_category_function: return 'F';
    case q_category_decision: return 'D';
    case q_category_utility: return 'U';
    default: return 'C';
    }
}

void set_automatic_name(node& named) {
    domain& owner = *named.domain;
    owner.number_nodes();
    std::array<char, 24> name{category_letter(named.category)};
    const auto write_number = [&](std::size_t number) {
        *std::to_chars(name.data() + 1, name.data() + name.size() - 1, number).ptr = '\0';
    };
    write_number(named.number);
    if (owner.names.find(owner, name.data()) != nullptr)
        write_number(owner.names.first_free_number(owner, name[0], owner.node_count + 1));
    set_node_name(named, name.data());
}

// The texts and states of a node, for a clone of it.
void copy_properties(const node& original, node& clone) {
    clone.label = duplicate_string(original.label.get());
    clone.attributes = original.attributes.copy();
    clone.x = original.x;
    clone.y = original.y;
    clone.state_count = original.state_count;
    clone.state_values = original.state_values;
    clone.state_labels.reserve(original.state_labels.size());
    for (const text& label : original.state_labels)
        clone.state_labels.push_back(duplicate_string(label.get()));
}

std::unique_ptr<table> copy_own_table(const node& original, node& clone) {
    if (!original.own_table) return nullptr;
    auto copy = copy_table(*original.own_table);
    copy->owner = &clone;
    replace_node(*copy, original, clone);
    return copy;
}

}  // namespace

const char* node_name(node& named) {
    if (!named.name) set_automatic_name(named);
    return named.name.get();
}

node& clone_node(node& original) {
    domain& owner = *original.domain;
    auto clone = std::make_unique<node>(owner, original.category, original.kind, original.subtype);
    copy_properties(original, *clone);
    clone->parents = original.parents;
    clone->own_table = copy_own_table(original, *clone);
    if (original.model) clone->model = copy_model(*original.model, *clone);
    std::vector<prepared_append<node>> new_children;
    new_children.reserve(original.parents.size());
    for (node* parent : original.parents) new_children.emplace_back(parent->children, clone.get());

    for (prepared_append<node>& new_child : new_children) new_child.commit();
    for (const node* parent : original.parents) owner.counts.add_link(parent->category, clone->category);
    owner.link(*clone);
    if (!clone->is_real_function()) owner.structure_changed();
    return *clone.release();
}

void delete_node(node& deleted) {
    require(deleted.component == nullptr);
    std::vector<prepared_removal> models;
    for (const node* child : deleted.children)
        if (child->model) models.emplace_back(*child->model, deleted, 0);

    run_cleanup(deleted);
    for (prepared_removal& prepared : models) prepared.commit();
    for (node* parent : deleted.parents) {
        parent->children.remove(&deleted);
        deleted.domain->counts.remove_link(parent->category, deleted.category);
    }
    for (node* child : deleted.children) forget_parent(*child, deleted, 0);
    domain& owner = *deleted.domain;
    owner.names.remove(deleted);
    if (!deleted.is_real_function()) owner.structure_changed();
    owner.unlink(deleted);
    delete &deleted;
}

}  // namespace quarn
