// Triangulation by one heuristic or the best of several, each prime component by itself.
//
//   Maps     undirected graph -> maximal cliques of a triangulation, a tree of them, an elimination order
//   Method   no heuristic is the best one everywhere, and all of them are fast [Kjaerulff 1990]. A minimum
//            triangulation is one of each prime component [Leimer 1993; Olesen & Madsen 2002]
#include "triangulation.h"

#include <algorithm>
#include <utility>

#include "clique_weight.h"
#include "prime_components.h"
#include "total_weight_triangulation.h"

namespace quarn {
namespace {

const char* name_of(elimination_heuristic heuristic) noexcept {
    switch (heuristic) {
    case elimination_heuristic::clique_size: return "clique size";
    case elimination_heuristic::clique_weight: return "clique weight";
    case elimination_heuristic::fill_in_size: return "fill-in size";
    case elimination_heuristic::fill_in_weight: break;
    }
    return "fill-in weight";
}

class component_triangulation {
public:
    component_triangulation(const graph& moral, const triangulation_request& asked, triangulation_log& log)
        : moral_(moral), pieces_(moral), asked_(asked), log_(log) {}

    clique_list run() {
        log_.begin();
        for (const vertex_set& connected : connected_components(moral_))
            for (const vertex_set& component : primes(connected)) triangulate(component);
        return std::move(cliques_);
    }

private:
    std::vector<vertex_set> primes(const vertex_set& connected) {
        const graph piece = pieces_.induced_by(connected);
        if (is_complete(piece)) return {connected};
        const clique_list minimal =
            triangulate_by_elimination(piece, elimination_heuristic::fill_in_size).cliques;
        std::vector<vertex_set> components = prime_components(piece, minimal);
        for (vertex_set& component : components) name_in_whole(component, connected);
        return components;
    }

    static void name_in_whole(vertex_set& vertices, const vertex_set& piece) {
        for (vertex& v : vertices) v = piece[v];
    }

    void triangulate(const vertex_set& component) {
        const graph piece = pieces_.induced_by(component);
        if (is_complete(piece)) {
            log_.complete_component(weight_of(moral_, component));
            cliques_.push_back(component);
            return;
        }
        log_.begin_component(component.size());
        for (vertex_set& clique : triangulated(piece, component)) {
            name_in_whole(clique, component);
            cliques_.push_back(std::move(clique));
        }
    }

    clique_list triangulated(const graph& piece, const vertex_set& component) {
        if (asked_.method == q_triangulate_total_weight)
            return triangulate_by_total_weight(piece, component, asked_, log_);
        elimination_result made;
        if (asked_.method == q_triangulate_best_greedy) {
            log_.begin_best_greedy();
            made = triangulate_by_best_heuristic(piece);
        } else {
            const auto heuristic = static_cast<elimination_heuristic>(asked_.method);
            log_.begin_heuristic(name_of(heuristic));
            made = triangulate_by_elimination(piece, heuristic);
            log_.elimination(made, component);
        }
        log_.component_cost(total_weight_of(piece, made.cliques));
        return std::move(made.cliques);
    }

    const graph& moral_;
    graph_pieces pieces_;
    const triangulation_request& asked_;
    triangulation_log& log_;
    clique_list cliques_;
};

// From the leaves to the roots, of each clique what its parent does not have.
std::vector<vertex> elimination_order(const clique_list& cliques, const clique_forest& tree,
                                      std::span<const vertex_domain> domains) {
    std::vector<vertex> order;
    order.reserve(domains.size());
    for (const std::size_t next : tree.bottom_up) {
        const std::size_t parent = tree.parents[next];
        std::ranges::copy_if(cliques[next], std::back_inserter(order), [&](vertex v) {
            return parent == no_clique || !std::ranges::binary_search(cliques[parent], v);
        });
    }
    std::vector<vertex> sorted;
    sorted.reserve(order.size());
    for (const bool continuous : {true, false})
        std::ranges::copy_if(order, std::back_inserter(sorted),
                             [&](vertex v) { return domains[v].is_continuous == continuous; });
    return sorted;
}

// Moves, for each component, the last clique that holds the vertex eliminated last to the end of the list.
void put_roots_last(clique_list& cliques, const graph& whole, std::span<const vertex> order) {
    std::vector<std::size_t> rank(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) rank[order[i]] = i;
    std::vector<char> is_last(order.size(), false);
    for (const vertex_set& component : connected_components(whole))
        is_last[*std::ranges::max_element(component, {}, [&](vertex v) { return rank[v]; })] = true;
    std::vector<char> is_root(cliques.size(), false);
    for (std::size_t i = cliques.size(); i-- > 0;)
        for (const vertex v : cliques[i])
            if (std::exchange(is_last[v], false)) is_root[i] = true;
    clique_list sorted;
    sorted.reserve(cliques.size());
    for (const bool roots : {false, true})
        for (std::size_t i = 0; i < cliques.size(); ++i)
            if ((is_root[i] != 0) == roots) sorted.push_back(std::move(cliques[i]));
    cliques = std::move(sorted);
}

}  // namespace

elimination_result triangulate_by_best_heuristic(const graph& start) {
    using enum elimination_heuristic;
    elimination_result best = triangulate_by_elimination(start, clique_size);
    double best_weight = total_weight_of(start, best.cliques);
    const bool weights_matter = weights_differ_from_sizes(start);
    for (const elimination_heuristic heuristic : {clique_weight, fill_in_size, fill_in_weight}) {
        if (uses_weights(heuristic) && !weights_matter) continue;
        elimination_result tried = triangulate_by_elimination(start, heuristic);
        const double weight = total_weight_of(start, tried.cliques);
        if (weight >= best_weight) continue;
        best = std::move(tried);
        best_weight = weight;
    }
    return best;
}

triangulation triangulate_domain(const graph& moral, const triangulation_request& asked,
                                 triangulation_log& log) {
    triangulation made;
    made.cliques = component_triangulation(moral, asked, log).run();
    made.tree = make_clique_forest(made.cliques, moral.domains);
    made.order = elimination_order(made.cliques, made.tree, moral.domains);
    log.total_cost(total_weight_of(moral, made.cliques));
    if (asked.covers_all_nodes) log.elimination_sequence(made.order);
    return made;
}

triangulation triangulate_domain(const graph& moral, std::span<const vertex> order, triangulation_log& log) {
    triangulation made;
    elimination_result eliminated = triangulate_in_order(moral, order);
    log.given_order(eliminated);
    put_roots_last(eliminated.cliques, moral, order);
    made.cliques = std::move(eliminated.cliques);
    made.tree = make_clique_forest(made.cliques, moral.domains);
    made.order.assign(order.begin(), order.end());
    return made;
}

}  // namespace quarn
