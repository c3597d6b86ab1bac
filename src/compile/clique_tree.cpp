// Maximum cardinality search over cliques [Tarjan & Yannakakis 1984].
//
//   Maps     maximal cliques of a triangulated graph -> rooted trees with the running intersection property
//   Cost     linear in the sum of the clique sizes
//   Method   next comes the clique with most vertices in the cliques taken before; between equals the one that reached
//            its number last. Its parent is the clique that brought in the latest of these vertices
//   Differs  of the cliques with continuous vertices, those that hold all discrete ones around them come before their
//            equals; so they are met first, and those beyond them bring in nothing discrete [Lauritzen & Jensen 2001]
#include "clique_tree.h"

#include <algorithm>
#include <utility>

namespace quarn {
namespace {

class cardinality_search {
public:
    cardinality_search(const clique_list& cliques, std::span<const vertex_domain> domains)
        : cliques_(cliques),
          cliques_of_(domains.size()),
          brought_by_(domains.size(), no_clique),
          rank_(domains.size()),
          shared_(cliques.size()),
          taken_(cliques.size(), false),
          parents_(cliques.size(), no_clique) {
        for (std::size_t clique = 0; clique < cliques.size(); ++clique)
            for (const vertex member : cliques[clique]) cliques_of_[member].push_back(clique);
        find_entrances(domains);
    }

    void run() {
        order_.reserve(cliques_.size());
        for (std::size_t root = cliques_.size(); root-- > 0;)
            if (!taken_[root] && is_entrance_[root]) grow_tree(root);
        for (std::size_t root = cliques_.size(); root-- > 0;)  // without a strong triangulation
            if (!taken_[root]) grow_tree(root);
    }

    const std::vector<std::size_t>& order() const noexcept { return order_; }
    std::vector<std::size_t>& parents() noexcept { return parents_; }

private:
    // Entrances are the cliques without continuous vertices, and those that hold all discrete vertices around the
    // connected continuous ones that theirs belong to.
    void find_entrances(std::span<const vertex_domain> domains) {
        is_entrance_.assign(cliques_.size(), true);
        std::vector<char> is_met(domains.size(), false);
        std::vector<char> is_around(cliques_.size(), false);
        for (vertex start = 0; start < domains.size(); ++start) {
            if (!domains[start].is_continuous || is_met[start]) continue;
            std::vector<vertex> connected{start}, boundary;
            std::vector<std::size_t> around;
            is_met[start] = true;
            for (std::size_t next = 0; next < connected.size(); ++next)
                for (const std::size_t clique : cliques_of_[connected[next]]) {
                    if (std::exchange(is_around[clique], true)) continue;
                    around.push_back(clique);
                    for (const vertex v : cliques_[clique])
                        if (!std::exchange(is_met[v], true))
                            (domains[v].is_continuous ? connected : boundary).push_back(v);
                }
            for (const std::size_t clique : around)
                is_entrance_[clique] = std::ranges::count_if(cliques_[clique], [&](vertex v) {
                                           return !domains[v].is_continuous;
                                       }) == std::ssize(boundary);
            for (const vertex v : boundary) is_met[v] = false;  // it may be around others too
        }
    }

    void grow_tree(std::size_t root) {
        for (std::size_t next = root; next != no_clique; next = next_clique()) take(next);
    }

    void take(std::size_t clique) {
        taken_[clique] = true;
        order_.push_back(clique);
        parents_[clique] = parent_of(clique);
        for (const vertex member : cliques_[clique])
            if (brought_by_[member] == no_clique) bring(member, clique);
    }

    std::size_t parent_of(std::size_t clique) const noexcept {
        std::size_t parent = no_clique;
        std::size_t latest = 0;
        for (const vertex member : cliques_[clique])
            if (brought_by_[member] != no_clique && rank_[member] > latest) {
                latest = rank_[member];
                parent = brought_by_[member];
            }
        return parent;
    }

    void bring(vertex member, std::size_t clique) {
        brought_by_[member] = clique;
        rank_[member] = ++last_rank_;
        for (const std::size_t other : cliques_of_[member]) {
            if (taken_[other]) continue;
            const std::size_t rank = 2 * ++shared_[other] + is_entrance_[other];
            if (rank >= candidates_.size()) candidates_.resize(rank + 1);
            candidates_[rank].push_back(other);
            most_ = std::max(most_, rank);
        }
    }

    // A clique that moved on to a larger number was entered again there, and is taken from there first.
    std::size_t next_clique() {
        for (; most_ > 0; --most_)
            while (!candidates_[most_].empty()) {
                const std::size_t clique = candidates_[most_].back();
                candidates_[most_].pop_back();
                if (!taken_[clique]) return clique;
            }
        return no_clique;
    }

    const clique_list& cliques_;
    std::vector<std::vector<std::size_t>> cliques_of_;
    std::vector<std::size_t> brought_by_;  // the clique taken first that holds a vertex
    std::vector<std::size_t> rank_;        // of a vertex that was brought in, from 1
    std::size_t last_rank_ = 0;
    std::vector<std::size_t> shared_;  // the vertices of a clique that were brought in
    std::vector<char> taken_;
    std::vector<unsigned char> is_entrance_;
    std::vector<std::vector<std::size_t>>
        candidates_;  // by twice the number of such vertices, plus 1 for entrances
    std::size_t most_ = 0;
    std::vector<std::size_t> order_;
    std::vector<std::size_t> parents_;
};

// Depth first, each clique after its children, these in the order of the search.
std::vector<std::size_t> make_bottom_up(const std::vector<std::size_t>& order,
                                        const std::vector<std::size_t>& parents) {
    std::vector<std::vector<std::size_t>> children(parents.size());
    for (const std::size_t clique : order)
        if (parents[clique] != no_clique) children[parents[clique]].push_back(clique);
    std::vector<std::size_t> result;
    std::vector<std::size_t> path;
    result.reserve(order.size());
    std::vector<std::size_t> next_child(parents.size(), 0);
    for (const std::size_t root : order) {
        if (parents[root] != no_clique) continue;
        path.assign(1, root);
        while (!path.empty()) {
            const std::size_t clique = path.back();
            if (next_child[clique] < children[clique].size()) {
                path.push_back(children[clique][next_child[clique]++]);
            } else {
                result.push_back(clique);
                path.pop_back();
            }
        }
    }
    return result;
}

}  // namespace

clique_forest make_clique_forest(const clique_list& cliques, std::span<const vertex_domain> domains) {
    cardinality_search search(cliques, domains);
    search.run();
    std::vector<std::size_t> bottom_up = make_bottom_up(search.order(), search.parents());
    return {std::move(search.parents()), std::move(bottom_up)};
}

clique_forest make_clique_forest(const clique_list& cliques, std::size_t vertex_count) {
    return make_clique_forest(cliques, std::vector<vertex_domain>(vertex_count));
}

}  // namespace quarn
