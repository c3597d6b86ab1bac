#include "triangulation_log.h"

#include "clique_weight.h"
#include "log_nodes.h"
#include "sizes.h"
#include "split_tree.h"

namespace quarn {
namespace {

// The cliques below a graph of the tree.
double cost_of(const graph& piece, const std::vector<split>& tree, std::size_t root) {
    double cost = 0;
    std::vector<std::size_t> open{root};
    while (!open.empty()) {
        const split& next = tree[open.back()];
        open.pop_back();
        if (next.parts.empty()) cost += weight_of(piece, next.vertices);
        open.insert(open.end(), next.parts.begin(), next.parts.end());
    }
    return cost;
}

}  // namespace

size_text format_cost(double cost) noexcept {
    constexpr double exact = 9007199254740992;  // doubles below it have all whole numbers
    return format_size(cost < exact ? static_cast<std::size_t>(cost) : largest_size);
}

void triangulation_log::begin() { log_.print("\n"); }

void triangulation_log::begin_component(std::size_t size) {
    log_.print("\nTriangulating prime component with %s member%s:\n", format_size(size).data(),
               size == 1 ? "" : "s");
}

void triangulation_log::complete_component(double cost) {
    log_.print("This component is a clique of cost %s\n", format_cost(cost).data());
}

void triangulation_log::begin_heuristic(const char* name) {
    log_.print("\n    Using minimum %s heuristic for triangulation:\n\n", name);
}

void triangulation_log::begin_best_greedy() {
    log_.print("\n    Using the best greedy heuristic for triangulation\n\n");
}

void triangulation_log::elimination(const elimination_result& made, const vertex_set& piece) {
    if (!log_.is_set()) return;
    for (std::size_t step = 0; step < made.order.size(); ++step) {
        log_.print("\tEliminating %s\n", name(piece[made.order[step]]));
        fill_ins(made, step, piece);
    }
    removed(made, piece);
}

void triangulation_log::search(const graph& piece, const vertex_set& component, const search_limits& limits,
                               std::span<const clique_list> known, const search_result& found) {
    if (!log_.is_set()) return;
    const auto cost = [&](const clique_list& cliques) {
        return format_cost(total_weight_of(piece, cliques));
    };
    log_.print("Triangulating graph G1:\n\t");
    if (found.found_all || found.were_large_ones) {
        log_.print("Found %s minimal separators", format_size(found.separators_found).data());
        if (limits.separator_size > 0)
            log_.print(" (ignoring most separators larger than %s)",
                       format_size(limits.separator_size).data());
        log_.print("\n");
    } else {
        log_.print("G1 has more than %s minimal separators\n", format_size(found.separators_found).data());
    }
    log_.print("\tKept %s separator%s for triangulation\n", format_size(found.separators_kept).data(),
               found.separators_kept == 1 ? "" : "s");
    log_.print("\tCreated %s fragments\n", format_size(found.pieces).data());
    if (known.size() > 1) log_.print("\tInitial triangulation has cost %s\n", cost(known.front()).data());
    log_.print("\tFound greedy triangulation of cost %s\n", cost(known.back()).data());
    splits(piece, component, found);
    log_.print("\nFound %striangulation of cost %s\n", found.is_optimal ? "optimal " : "",
               format_cost(found.weight).data());
}

// The graphs are numbered as they come up: a graph before its parts.
void triangulation_log::splits(const graph& piece, const vertex_set& component, const search_result& found) {
    const std::vector<split> tree = make_split_tree(found.cliques, piece.vertex_count());
    const auto number = [](std::size_t place) { return format_size(place + 1); };
    for (std::size_t i = 0; i < tree.size(); ++i) {
        const split& described = tree[i];
        if (described.parts.empty()) {
            log_.print("\n    Graph G%s is a clique of cost %s\n", number(i).data(),
                       format_cost(weight_of(piece, described.vertices)).data());
            continue;
        }
        log_.print("\n    %sriangulation of graph G%s has cost %s\n", found.is_optimal ? "Optimal t" : "T",
                   number(i).data(), format_cost(cost_of(piece, tree, i)).data());
        log_.print("    Using the following separator of size %s and cost %s:\n",
                   format_size(described.separator.size()).data(),
                   format_cost(weight_of(piece, described.separator)).data());
        std::vector<node*> separator;
        for (const vertex v : described.separator) separator.push_back(nodes_[component[v]]);
        log_nodes(log_, separator);
        log_.print("    to split the %s into the following subgraphs:\n", i == 0 ? "graph" : "subgraph");
        for (const std::size_t part : described.parts)
            log_.print("\tG%s (size: %s)\n", number(part).data(),
                       format_size(tree[part].vertices.size()).data());
    }
}

void triangulation_log::component_cost(double cost) {
    log_.print("\nFound triangulation of prime component of cost %s\n", format_cost(cost).data());
}

void triangulation_log::total_cost(double cost) {
    log_.print("\n\nTotal cost of triangulation for all prime components is %s\n", format_cost(cost).data());
}

void triangulation_log::elimination_sequence(std::span<const vertex> order) {
    if (!log_.is_set()) return;
    log_.print("\n\nElimination sequence:\n\n");
    for (const vertex v : order) log_.print("    %s\n", name(v));
}

void triangulation_log::given_order(const elimination_result& made) {
    if (!log_.is_set()) return;
    const vertex_set all = first_vertices(nodes_.size());
    log_.print("\n\nUser specified triangulation -- Fill-in links and node numbering:\n\n");
    for (std::size_t step = 0; step < made.order.size(); ++step) {
        fill_ins(made, step, all);
        log_.print("%5s %s\n", format_size(made.order.size() - step).data(), name(made.order[step]));
    }
    removed(made, all);
}

void triangulation_log::fill_ins(const elimination_result& made, std::size_t step, const vertex_set& piece) {
    for (std::size_t i = step == 0 ? 0 : made.fill_in_ends[step - 1]; i < made.fill_in_ends[step]; ++i)
        log_.print("\tCreating fill-in between %s and %s\n", name(piece[made.fill_ins[i].first]),
                   name(piece[made.fill_ins[i].second]));
}

void triangulation_log::removed(const elimination_result& made, const vertex_set& piece) {
    for (const edge& link : made.removed)
        log_.print("\tRemoving redundant fill-in between %s and %s\n", name(piece[link.first]),
                   name(piece[link.second]));
}

}  // namespace quarn
