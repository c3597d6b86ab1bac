#include "ancestry.h"
#include "api_frame.h"
#include "links.h"
#include "node.h"

using namespace quarn;

q_node_t q_node_get_next(q_node_t node) {
    return api_call<q_node_t>(nullptr, {node}, [&] { return node->older; });
}

q_domain_t q_node_get_domain(q_node_t node) {
    return api_call<q_domain_t>(nullptr, {node}, [&] { return node->domain; });
}

q_category_t q_node_get_category(q_node_t node) {
    return api_call<q_category_t>(-1, {node}, [&] { return node->category; });
}

q_kind_t q_node_get_kind(q_node_t node) {
    return api_call<q_kind_t>(-2, {node}, [&] { return node->kind; });
}

q_status_t q_node_set_category(q_node_t node, q_category_t category) {
    return api_status({node}, [&] { set_category(*node, category); });
}

q_status_t q_node_set_name(q_node_t node, const char* name) {
    return api_status({node, name}, [&] { set_node_name(*node, name); });
}

const char* q_node_get_name(q_node_t node) {
    return api_call<const char*>(nullptr, {node}, [&] { return node_name(*node); });
}

q_status_t q_node_set_label(q_node_t node, const char* label) {
    return api_status({node, label}, [&] { node->label = duplicate_string(label); });
}

const char* q_node_get_label(q_node_t node) {
    return api_call<const char*>(nullptr, {node}, [&] { return node->label ? node->label.get() : ""; });
}

q_status_t q_node_set_position(q_node_t node, int32_t x, int32_t y) {
    return api_status({node}, [&] {
        node->x = x;
        node->y = y;
    });
}

q_status_t q_node_get_position(q_node_t node, int32_t* x, int32_t* y) {
    return api_status({node, x, y}, [&] {
        require(x != y);
        *x = node->x;
        *y = node->y;
    });
}

q_status_t q_node_add_parent(q_node_t child, q_node_t parent) {
    return api_status({child, parent}, [&] { add_parent(*child, *parent); });
}

q_status_t q_node_remove_parent(q_node_t child, q_node_t parent) {
    return api_status({child, parent}, [&] { remove_parent(*child, *parent, 0); });
}

q_status_t q_node_remove_parent_keep_state(q_node_t child, q_node_t parent, size_t state) {
    return api_status({child, parent}, [&] {
        require(parent->is_discrete() && state < parent->state_count);
        remove_parent(*child, *parent, state);
    });
}

q_status_t q_node_switch_parent(q_node_t child, q_node_t old_parent, q_node_t new_parent) {
    return api_status({child, old_parent, new_parent},
                      [&] { switch_parent(*child, *old_parent, *new_parent); });
}

const q_node_t* q_node_get_parents(q_node_t node) {
    return api_call<const q_node_t*>(nullptr, {node}, [&] { return node->parents.array(); });
}

const q_node_t* q_node_get_children(q_node_t node) {
    return api_call<const q_node_t*>(nullptr, {node}, [&] { return node->children.array(); });
}

const q_node_t* q_node_get_ancestors(q_node_t node) {
    return api_call<const q_node_t*>(nullptr, {node}, [&] { return ancestors(*node).array(); });
}

const q_node_t* q_node_get_descendants(q_node_t node) {
    return api_call<const q_node_t*>(nullptr, {node}, [&] { return descendants(*node).array(); });
}

q_node_t q_node_clone(q_node_t node) {
    return api_call<q_node_t>(nullptr, {node}, [&] { return &clone_node(*node); });
}

q_status_t q_node_delete(q_node_t node) {
    return api_status({node}, [&] { delete_node(*node); });
}

q_status_t q_node_set_attribute(q_node_t node, const char* key, const char* value) {
    return api_status({node, key}, [&] {
        node->attributes.set(key, value, {"label", "position", "states", "subtype", "state_values"});
    });
}

const char* q_node_get_attribute(q_node_t node, const char* key) {
    return api_call<const char*>(nullptr, {node, key}, [&] { return node->attributes.value_of(key); });
}

q_attribute_t q_node_get_first_attribute(q_node_t node) {
    return api_call<q_attribute_t>(nullptr, {node}, [&] { return node->attributes.first(); });
}

q_status_t q_node_set_user_data(q_node_t node, void* data) {
    return api_status({node}, [&] { node->user_data = data; });
}

void* q_node_get_user_data(q_node_t node) {
    return api_call<void*>(nullptr, {node}, [&] { return node->user_data; });
}

q_status_t q_node_set_user_data_cleanup(q_node_t node, void (*cleanup)(q_node_t)) {
    return api_status({node}, [&] { node->user_data_cleanup = cleanup; });
}
