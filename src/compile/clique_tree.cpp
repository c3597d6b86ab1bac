// Maximum cardinality search over cliques [Tarjan & Yannakakis 1984].
//
//   Maps     maximal cliques of a triangulated graph -> rooted trees with the running intersection property
//   Cost     linear in the sum of the clique sizes
//   Method   next comes the clique with most vertices in the cliques taken before; between equals the one that reached
//            its number last. Its parent is the clique that brought in the latest of these vertices
#include "clique_tree.h"

#include <algorithm>

namespace quarn {
namespace {

class cardinality_search {
public:
    cardinality_search(const clique_list& cliques, std::size_t vertex_count)
        : cliques_(cliques),
          cliques_of_(vertex_count),
          brought_by_(vertex_count, no_clique),
          rank_(vertex_count),
          shared_(cliques.size()),
          taken_(cliques.size(), false),
          parents_(cliques.size(), no_clique) {
        for (std::size_t clique = 0; clique < cliques.size(); ++clique)
            for (const vertex member : cliques[clique]) cliques_of_[member].push_back(clique);
    }

    void run() {
        order_.reserve(cliques_.size());
        for (std::size_t root = cliques_.size(); root-- > 0;)
            if (!taken_[root]) grow_tree(root);
    }

    const std::vector<std::size_t>& order() const noexcept { return order_; }
    std::vector<std::size_t>& parents() noexcept { return parents_; }

private:
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
            const std::size_t count = ++shared_[other];
            if (count >= candidates_.size()) candidates_.resize(count + 1);
            candidates_[count].push_back(other);
            most_ = std::max(most_, count);
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
    std::vector<std::vector<std::size_t>> candidates_;  // by the number of such vertices
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
    std::vector<std::size_t> next_child(parents.size(), 0);
    for (const std::size_t root : order) {
        if (parents[root] == no_clique) path.push_back(root);
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

clique_forest make_clique_forest(const clique_list& cliques, std::size_t vertex_count) {
    cardinality_search search(cliques, vertex_count);
    search.run();
    std::vector<std::size_t> bottom_up = make_bottom_up(search.order(), search.parents());
    return {std::move(search.parents()), std::move(bottom_up)};
}

}  // namespace quarn
