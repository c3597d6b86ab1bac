// The trace of a triangulation in the log of its domain.
#pragma once

#include <span>

#include "elimination.h"
#include "graph.h"
#include "log_file.h"
#include "node.h"
#include "total_weight_search.h"

namespace quarn {

// A weight as a whole number, "HUGE" from 2 to the power 53 on.
size_text format_cost(double cost) noexcept;

// Writes nothing when the domain has no log. Vertices of a piece are named through the list of those of the whole graph
// that it is made of.
class triangulation_log {
public:
    // `nodes` are those of the vertices.
    triangulation_log(log_file& log, std::span<node* const> nodes) : log_(log), nodes_(nodes) {}

    void begin();
    void begin_component(std::size_t size);
    void complete_component(double cost);
    void begin_heuristic(const char* name);
    void begin_best_greedy();
    void elimination(const elimination_result& made, const vertex_set& piece);
    // The last of the known triangulations is the greedy one.
    void search(const graph& piece, const vertex_set& component, const search_limits& limits,
                std::span<const clique_list> known, const search_result& found);
    void component_cost(double cost);
    void total_cost(double cost);
    void elimination_sequence(std::span<const vertex> order);
    void given_order(const elimination_result& made);

private:
    const char* name(vertex v) { return node_name(*nodes_[v]); }
    void fill_ins(const elimination_result& made, std::size_t step, const vertex_set& piece);
    void splits(const graph& piece, const vertex_set& component, const search_result& found);
    void removed(const elimination_result& made, const vertex_set& piece);

    log_file& log_;
    std::span<node* const> nodes_;
};

}  // namespace quarn
