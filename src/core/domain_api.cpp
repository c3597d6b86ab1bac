#include "api_frame.h"
#include "domain.h"
#include "node.h"

using namespace quarn;

q_domain_t q_domain_new(void) {
    return api_call<q_domain_t>(nullptr, {}, [] { return new domain; });
}

q_status_t q_domain_delete(q_domain_t domain) {
    return api_status({domain}, [&] { delete_domain(domain); });
}

q_status_t q_domain_set_log_file(q_domain_t domain, const char* path, int append) {
    return api_status({domain, path}, [&] { domain->log.open(path, append != 0); });
}

q_status_t q_domain_set_concurrency_level(q_domain_t domain, size_t level) {
    return api_status({domain}, [&] {
        require(level > 0);
        domain->workers.level = level;
    });
}

size_t q_domain_get_concurrency_level(q_domain_t domain) {
    return api_call<size_t>(no_size, {domain}, [&] { return domain->workers.level; });
}

q_status_t q_domain_set_grain_size(q_domain_t domain, size_t grain) {
    return api_status({domain}, [&] {
        require(grain > 0);
        domain->workers.grain = grain;
    });
}

size_t q_domain_get_grain_size(q_domain_t domain) {
    return api_call<size_t>(no_size, {domain}, [&] { return domain->workers.grain; });
}

q_node_t q_domain_new_node(q_domain_t domain, q_category_t category, q_kind_t kind) {
    return api_call<q_node_t>(nullptr, {domain},
                              [&] { return &create_node(*domain, category, kind_for(category, kind)); });
}

q_node_t q_domain_get_first_node(q_domain_t domain) {
    return api_call<q_node_t>(nullptr, {domain}, [&] { return domain->newest; });
}

q_node_t q_domain_get_node_by_name(q_domain_t domain, const char* name) {
    return api_call<q_node_t>(nullptr, {domain, name}, [&] { return domain->names.find(*domain, name); });
}

q_status_t q_domain_set_node_size(q_domain_t domain, int32_t width, int32_t height) {
    return api_status({domain}, [&] {
        domain->node_width = width;
        domain->node_height = height;
    });
}

q_status_t q_domain_get_node_size(q_domain_t domain, int32_t* width, int32_t* height) {
    return api_status({domain, width, height}, [&] {
        require(width != height);
        *width = domain->node_width;
        *height = domain->node_height;
    });
}

q_status_t q_domain_set_attribute(q_domain_t domain, const char* key, const char* value) {
    return api_status({domain, key}, [&] { domain->attributes.set(key, value, {"node_size"}); });
}

const char* q_domain_get_attribute(q_domain_t domain, const char* key) {
    return api_call<const char*>(nullptr, {domain, key}, [&] { return domain->attributes.value_of(key); });
}

q_attribute_t q_domain_get_first_attribute(q_domain_t domain) {
    return api_call<q_attribute_t>(nullptr, {domain}, [&] { return domain->attributes.first(); });
}

q_attribute_t q_attribute_get_next(q_attribute_t attribute) {
    return api_call<q_attribute_t>(nullptr, {attribute}, [&] { return attribute->next; });
}

const char* q_attribute_get_key(q_attribute_t attribute) {
    return api_call<const char*>(nullptr, {attribute}, [&] { return attribute->key.get(); });
}

const char* q_attribute_get_value(q_attribute_t attribute) {
    return api_call<const char*>(nullptr, {attribute}, [&] { return attribute->value.get(); });
}

q_status_t q_domain_set_user_data(q_domain_t domain, void* data) {
    return api_status({domain}, [&] { domain->user_data = data; });
}

void* q_domain_get_user_data(q_domain_t domain) {
    return api_call<void*>(nullptr, {domain}, [&] { return domain->user_data; });
}

q_status_t q_domain_set_user_data_cleanup(q_domain_t domain, void (*cleanup)(q_domain_t)) {
    return api_status({domain}, [&] { domain->user_data_cleanup = cleanup; });
}
