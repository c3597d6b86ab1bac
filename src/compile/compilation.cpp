// The stages of a compilation, and the states of a domain: uncompiled, triangulated (there is a junction forest) and
// compiled (tables are assigned to it).
#include "compilation.h"

#include <algorithm>
#include <utility>

#include "compile_log.h"
#include "elimination_order.h"
#include "errors.h"
#include "forest_construction.h"
#include "junction_forest.h"
#include "moral_graph.h"
#include "node.h"
#include "table_assignment.h"
#include "triangulation.h"

namespace quarn {
namespace {

void require_triangulable(const domain& tested) {
    require(elimination_count(tested) > 0 && tested.compiled == nullptr);
}

handle_list<node> nodes_in(std::span<const vertex> order, const moral_graph& moral) {
    handle_list<node> nodes;
    nodes.reserve(order.size());
    for (const vertex v : order) nodes.append(moral.nodes[v]);
    return nodes;
}

void build_forest(domain& changed, const moral_graph& moral, const triangulation& triangulated) {
    handle_list<node> order = nodes_in(triangulated.order, moral);
    auto forest = make_junction_forest(changed, moral, triangulated);
    changed.log.flush();
    changed.settings.found_order.swap(order);
    changed.compiled = std::move(forest);
}

}  // namespace

void triangulate(domain& changed, q_triangulation_method_t method) {
    require_triangulable(changed);
    require(method >= q_triangulate_clique_size && method <= q_triangulate_best_greedy);
    const compile_settings& settings = changed.settings;
    const bool searches = method == q_triangulate_total_weight;
    require(!searches || settings.max_separator_size == 0 || !settings.initial_order.empty());

    log_time(changed.log);
    const moral_graph moral =
        searches ? make_moral_graph(changed, settings.initial_order) : make_moral_graph(changed);
    triangulation_log log(changed.log, moral.nodes);
    const triangulation_request asked{method, settings.max_separators, settings.max_separator_size,
                                      searches && !settings.initial_order.empty(), settings.excluded.empty()};
    build_forest(changed, moral, triangulate_domain(moral.links, asked, log));
}

void triangulate(domain& changed, const q_node_t* order) {
    require_triangulable(changed);
    const handle_list<node> checked = checked_elimination_order(changed, order);
    log_time(changed.log);
    const moral_graph moral = make_moral_graph(changed, checked);
    triangulation_log log(changed.log, moral.nodes);
    const vertex_set as_numbered = first_vertices(moral.nodes.size());
    build_forest(changed, moral, triangulate_domain(moral.links, as_numbered, log));
}

void compile(domain& changed) {
    require(changed.counts.discrete + changed.counts.continuous > 0 && forest_of(changed) == nullptr);
    if (changed.compiled == nullptr) triangulate(changed, q_triangulate_best_greedy);
    junction_forest& forest = *triangulated_forest(changed);
    try {
        assign_tables(changed, forest);
        changed.log.flush();
    } catch (...) {
        changed.uncompile();
        throw;
    }
    for (node* function = changed.oldest; function != nullptr; function = function->newer)
        function->value_failure = q_error_no_equilibrium;
    forest.is_compiled = true;
    changed.sampling.reset();
}

void set_initial_triangulation(domain& changed, const q_node_t* order) {
    handle_list<node> checked;
    if (order != nullptr) checked = checked_elimination_order(changed, order);
    changed.settings.initial_order.swap(checked);
}

void set_excluded_nodes(domain& changed, const q_node_t* nodes) {
    require(changed.compiled == nullptr);
    const uint64_t listed = changed.new_mark();
    handle_list<node> excluded;
    for (; nodes != nullptr && *nodes != nullptr; ++nodes) {
        require((*nodes)->domain == &changed && (*nodes)->is_discrete());
        if (std::exchange((*nodes)->mark, listed) != listed) excluded.append(*nodes);
    }
    if (std::ranges::equal(excluded, changed.settings.excluded)) return;
    changed.settings.excluded.swap(excluded);
    changed.settings.initial_order.clear();  // it is of other nodes now
}

const q_node_t* elimination_order(const domain& asked) {
    require(!asked.settings.found_order.empty());
    return asked.settings.found_order.array();
}

}  // namespace quarn
