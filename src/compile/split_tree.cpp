// Splits of a triangulated graph, down to its cliques.
//
//   Maps     maximal cliques of a triangulated connected graph -> tree of its splits
//   Cost     for each split the sizes of its cliques
//   Method   a subtree of a clique tree is cut at the link with the most even sides, and at all links where the cliques
//            share the same vertices
#include "split_tree.h"

#include <algorithm>
#include <iterator>

#include "clique_tree.h"

namespace quarn {
namespace {

class splitting {
public:
    splitting(const clique_list& cliques, std::size_t vertex_count)
        : cliques_(cliques),
          tree_(make_clique_forest(cliques, vertex_count)),
          split_of_(cliques.size(), 0),
          sizes_(cliques.size()) {}

    std::vector<split> run() {
        splits_.resize(1);
        members_.emplace_back(tree_.bottom_up.rbegin(), tree_.bottom_up.rend());
        for (std::size_t current = 0; current < splits_.size(); ++current) {
            vertex_set& vertices = splits_[current].vertices;
            for (const std::size_t clique : members_[current])
                vertices.insert(vertices.end(), cliques_[clique].begin(), cliques_[clique].end());
            std::ranges::sort(vertices);
            vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
            if (members_[current].size() > 1) cut(current);
        }
        return std::move(splits_);
    }

private:
    vertex_set shared_with_parent(std::size_t clique) const {
        vertex_set shared;
        std::ranges::set_intersection(cliques_[clique], cliques_[tree_.parents[clique]],
                                      std::back_inserter(shared));
        return shared;
    }

    // The clique below the link with the most even sides.
    std::size_t middle_of(const std::vector<std::size_t>& members) {
        for (const std::size_t clique : members) sizes_[clique] = 1;
        for (std::size_t i = members.size() - 1; i > 0; --i)
            sizes_[tree_.parents[members[i]]] += sizes_[members[i]];
        return *std::ranges::max_element(members.begin() + 1, members.end(), {}, [&](std::size_t clique) {
            return std::min(sizes_[clique], members.size() - sizes_[clique]);
        });
    }

    void cut(std::size_t current) {
        const std::vector<std::size_t> members = std::move(members_[current]);
        const vertex_set separator = shared_with_parent(middle_of(members));
        for (const std::size_t clique : members) {
            if (clique == members.front() || shared_with_parent(clique) == separator) {
                split_of_[clique] = splits_.size();
                splits_[current].parts.push_back(splits_.size());
                splits_.emplace_back();
                members_.emplace_back();
            } else {
                split_of_[clique] = split_of_[tree_.parents[clique]];
            }
            members_[split_of_[clique]].push_back(clique);
        }
        splits_[current].separator = separator;
    }

    const clique_list& cliques_;
    clique_forest tree_;
    std::vector<std::size_t> split_of_;
    std::vector<std::size_t> sizes_;  // of the subtrees below the cliques
    std::vector<split> splits_;
    std::vector<std::vector<std::size_t>> members_;  // the cliques of each split, parents first
};

}  // namespace

std::vector<split> make_split_tree(const clique_list& cliques, std::size_t vertex_count) {
    return splitting(cliques, vertex_count).run();
}

}  // namespace quarn
