// Completing the boundaries of continuous vertices [Lauritzen & Jensen 2001].
//
//   Maps     moral graph -> moral graph in which the discrete boundary of each connected set of continuous vertices is
//            complete
//   Cost     linear in the graph, and the squares of the boundaries
#include "necessary_fill_ins.h"

#include <algorithm>
#include <utility>

#include "errors.h"
#include "node.h"
#include "sizes.h"

namespace quarn {
namespace {

class boundary_completion {
public:
    boundary_completion(moral_graph& changed, log_file& log)
        : graph_(changed.links), nodes_(changed.nodes), log_(log), met_for_(nodes_.size(), nodes_.size()) {}

    void run() {
        log_.print("\n\nNecessary fill-ins:\n\n");
        std::vector<vertex> in_creation_order = first_vertices(nodes_.size());
        std::ranges::sort(in_creation_order, {}, [&](vertex v) { return nodes_[v]->number; });
        for (const vertex v : in_creation_order)
            if (graph_.domains[v].is_continuous && met_for_[v] == nodes_.size()) complete(boundary_from(v));
    }

private:
    // The discrete vertices around the continuous ones that are connected with `start`.
    std::vector<vertex> boundary_from(vertex start) {
        std::vector<vertex> reached{start}, boundary;
        met_for_[start] = start;
        for (std::size_t next = 0; next < reached.size(); ++next)
            for (const vertex neighbor : graph_.neighbors[reached[next]])
                if (std::exchange(met_for_[neighbor], start) != start)
                    (graph_.domains[neighbor].is_continuous ? reached : boundary).push_back(neighbor);
        std::ranges::sort(boundary, {}, [&](vertex v) { return nodes_[v]->number; });
        return boundary;
    }

    // Of thousands of nodes the table would be far beyond any machine, and so would be the time to find that out later.
    void complete(const std::vector<vertex>& boundary) {
        constexpr std::size_t hopeless = 1000;
        if (boundary.size() > hopeless) {
            std::size_t size = 1;
            for (const vertex v : boundary) size = saturating_product(size, nodes_[v]->state_count);
            require(size != largest_size, q_error_size_too_large);
        }
        for (auto a = boundary.begin(); a != boundary.end(); ++a)
            for (auto b = a + 1; b != boundary.end(); ++b)
                if (!std::ranges::binary_search(graph_.neighbors[*a], *b)) link(*a, *b);
    }

    void link(vertex a, vertex b) {
        for (const auto& [from, to] : {edge(a, b), edge(b, a)})
            graph_.neighbors[from].insert(std::ranges::lower_bound(graph_.neighbors[from], to), to);
        if (log_.is_set())
            log_.print("    Creating necessary fill-in between %s and %s\n", node_name(*nodes_[a]),
                       node_name(*nodes_[b]));
    }

    graph& graph_;
    std::span<node* const> nodes_;
    log_file& log_;
    std::vector<vertex> met_for_;  // the continuous vertex from which each was last reached
};

}  // namespace

void add_necessary_fill_ins(moral_graph& changed, domain& source) {
    if (source.counts.discrete > 0 && source.counts.continuous > 0)
        boundary_completion(changed, source.log).run();
}

}  // namespace quarn
