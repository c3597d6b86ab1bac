#include "api_frame.h"
#include "junction_forest.h"
#include "node.h"

using namespace quarn;

q_status_t q_domain_compile(q_domain_t domain) {
    return api_status({domain}, [&] { compile(*domain); });
}

q_status_t q_domain_uncompile(q_domain_t domain) {
    return api_status({domain}, [&] { domain->uncompile(); });
}

q_boolean_t q_domain_is_compiled(q_domain_t domain) {
    return api_predicate({domain}, [&] { return domain->compiled != nullptr; });
}

q_boolean_t q_domain_is_triangulated(q_domain_t domain) {
    return api_predicate({domain}, [&] { return domain->compiled != nullptr; });
}

q_junction_tree_t q_domain_get_first_junction_tree(q_domain_t domain) {
    return api_call<q_junction_tree_t>(nullptr, {domain}, [&]() -> q_junction_tree_t {
        const junction_forest* forest = forest_of(*domain);
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
        const junction_forest* forest = forest_of(*node->domain);
        require(forest != nullptr, q_error_not_compiled);
        return &forest->tree_of(*node);
    });
}
