#include "api_frame.h"
#include "compilation.h"
#include "junction_forest.h"
#include "limid_reduction.h"
#include "node.h"

using namespace quarn;

q_status_t q_domain_compile(q_domain_t domain) {
    return api_status({domain}, [&] { compile(*domain); });
}

q_status_t q_domain_uncompile(q_domain_t domain) {
    return api_status({domain}, [&] { domain->uncompile(); });
}

q_boolean_t q_domain_is_compiled(q_domain_t domain) {
    return api_predicate({domain}, [&] { return forest_of(*domain) != nullptr; });
}

q_boolean_t q_domain_is_triangulated(q_domain_t domain) {
    return api_predicate({domain}, [&] { return triangulated_forest(*domain) != nullptr; });
}

q_boolean_t q_domain_is_compressed(q_domain_t domain) {
    return api_predicate({domain}, [&] {
        const junction_forest* forest = forest_of(*domain);
        return forest != nullptr && forest->is_compressed;
    });
}

q_status_t q_domain_triangulate(q_domain_t domain, q_triangulation_method_t method) {
    return api_status({domain}, [&] { triangulate(*domain, method); });
}

q_status_t q_domain_triangulate_with_order(q_domain_t domain, const q_node_t* order) {
    return api_status({domain, order}, [&] { triangulate(*domain, order); });
}

const q_node_t* q_domain_get_elimination_order(q_domain_t domain) {
    return api_call<const q_node_t*>(nullptr, {domain}, [&] { return elimination_order(*domain); });
}

q_status_t q_domain_set_initial_triangulation(q_domain_t domain, const q_node_t* order) {
    return api_status({domain}, [&] { set_initial_triangulation(*domain, order); });
}

q_status_t q_domain_set_excluded_nodes(q_domain_t domain, const q_node_t* nodes) {
    return api_status({domain}, [&] { set_excluded_nodes(*domain, nodes); });
}

q_status_t q_domain_set_max_separators(q_domain_t domain, size_t count) {
    return api_status({domain}, [&] { domain->settings.max_separators = count; });
}

size_t q_domain_get_max_separators(q_domain_t domain) {
    return api_call<size_t>(no_size, {domain}, [&] { return domain->settings.max_separators; });
}

q_status_t q_domain_set_max_separator_size(q_domain_t domain, size_t size) {
    return api_status({domain}, [&] { domain->settings.max_separator_size = size; });
}

size_t q_domain_get_max_separator_size(q_domain_t domain) {
    return api_call<size_t>(no_size, {domain}, [&] { return domain->settings.max_separator_size; });
}

q_junction_tree_t q_domain_get_first_junction_tree(q_domain_t domain) {
    return api_call<q_junction_tree_t>(nullptr, {domain}, [&]() -> q_junction_tree_t {
        const junction_forest* forest = triangulated_forest(*domain);
        return forest == nullptr ? nullptr : forest->trees.front().get();
    });
}

q_junction_tree_t q_junction_tree_get_next(q_junction_tree_t tree) {
    return api_call<q_junction_tree_t>(nullptr, {tree}, [&] { return tree->next; });
}

q_clique_t q_junction_tree_get_root(q_junction_tree_t tree) {
    return api_call<q_clique_t>(nullptr, {tree}, [&] { return tree->root; });
}

const q_clique_t* q_junction_tree_get_cliques(q_junction_tree_t tree) {
    return api_call<const q_clique_t*>(nullptr, {tree}, [&] { return tree->cliques.array(); });
}

size_t q_junction_tree_get_total_size(q_junction_tree_t tree) {
    return api_call<size_t>(no_size, {tree}, [&] { return total_size(*tree); });
}

q_junction_tree_t q_clique_get_junction_tree(q_clique_t clique) {
    return api_call<q_junction_tree_t>(nullptr, {clique}, [&] { return clique->tree; });
}

const q_node_t* q_clique_get_members(q_clique_t clique) {
    return api_call<const q_node_t*>(nullptr, {clique}, [&] { return clique->members.array(); });
}

const q_clique_t* q_clique_get_neighbors(q_clique_t clique) {
    return api_call<const q_clique_t*>(nullptr, {clique}, [&] { return clique->neighbors.array(); });
}

q_junction_tree_t q_node_get_junction_tree(q_node_t node) {
    return api_call<q_junction_tree_t>(nullptr, {node}, [&] {
        require(node->has_kind());
        const junction_forest* forest = triangulated_forest(*node->domain);
        require(forest != nullptr && forest->of(*node).tree != nullptr, q_error_not_compiled);
        return forest->of(*node).tree;
    });
}

size_t q_domain_minimize_limid(q_domain_t domain) {
    return api_call<size_t>(no_size, {domain}, [&] { return minimize_limid(*domain); });
}
