// Local search over triangulations.
//
//   Maps     triangulation -> one that weighs no more
//   Method   a connected part of the clique tree is a triangulation of the graph that its vertices induce, with those
//            that it shares with each clique around it linked to each other. Any other triangulation of that graph
//            fits in its place. Parts grow around every clique, heavy ones first, up to a number of vertices that
//            becomes larger when nothing gets better
#include "piecewise_improvement.h"

#include <algorithm>
#include <set>

#include "clique_tree.h"
#include "clique_weight.h"

namespace quarn {
namespace {

vertex_set shared_by(const vertex_set& a, const vertex_set& b) {
    vertex_set shared;
    std::ranges::set_intersection(a, b, std::back_inserter(shared));
    return shared;
}

class improvement {
public:
    improvement(const graph& connected, clique_list& cliques, search_work& work,
                const piece_improver& improve)
        : whole_(connected), pieces_(connected), cliques_(cliques), work_(work), improve_(improve) {}

    void run() {
        for (std::size_t limit = 12; !work_.is_over(); limit += limit / 2) {
            while (improve_some(limit)) {}
            if (limit >= whole_.vertex_count()) return;
        }
    }

private:
    bool improve_some(std::size_t limit) {
        link_cliques();
        std::vector<std::pair<double, std::size_t>> order;
        for (std::size_t i = 0; i < cliques_.size(); ++i)
            order.emplace_back(-weight_of(whole_, cliques_[i]), i);
        std::ranges::sort(order);
        return std::ranges::any_of(order, [&](const auto& center) {
            return !work_.is_over() && improve_around(center.second, limit);
        });
    }

    void link_cliques() {
        const clique_forest tree = make_clique_forest(cliques_, whole_.vertex_count());
        linked_.assign(cliques_.size(), {});
        for (std::size_t clique = 0; clique < cliques_.size(); ++clique)
            if (const std::size_t parent = tree.parents[clique]; parent != no_clique) {
                linked_[clique].push_back(parent);
                linked_[parent].push_back(clique);
            }
    }

    bool improve_around(std::size_t center, std::size_t limit) {
        taken_.assign(cliques_.size(), false);
        vertices_.clear();
        std::vector<std::size_t> around{center};
        for (std::size_t next = 0; next < around.size(); ++next) {
            // The heaviest that fits.
            std::ranges::sort(around.begin() + static_cast<std::ptrdiff_t>(next), around.end(), {},
                              [&](auto i) { return -weight_of(whole_, cliques_[i]); });
            vertex_set larger;
            std::ranges::set_union(vertices_, cliques_[around[next]], std::back_inserter(larger));
            if (next > 0 && larger.size() > limit) continue;
            vertices_ = std::move(larger);
            taken_[around[next]] = true;
            for (const std::size_t clique : linked_[around[next]])
                if (!taken_[clique]) around.push_back(clique);
        }
        work_.spend(cliques_.size() + 100 * vertices_.size());
        return improve_taken();
    }

    bool improve_taken() {
        graph piece = pieces_.induced_by(vertices_);
        clique_list inner;
        clique_list borders;
        std::size_t links = 0;
        for (std::size_t clique = 0; clique < cliques_.size(); ++clique) {
            if (!taken_[clique]) continue;
            inner.push_back(numbered(cliques_[clique]));
            for (const std::size_t outer : linked_[clique])
                if (!taken_[outer]) borders.push_back(numbered(shared_by(cliques_[clique], cliques_[outer])));
        }
        for (const vertex_set& border : borders)
            for (const vertex v : border) link(piece.neighbors[v], border, v);
        for (const vertex_set& neighbors : piece.neighbors) links += neighbors.size();
        if (inner.size() < 2 || !tried_.emplace(links, vertices_).second) return false;
        const double before = total_weight_of(piece, inner);
        improve_(piece, inner);
        if (!(total_weight_of(piece, inner) < before)) return false;
        replace_taken(inner, borders);
        return true;
    }

    vertex_set numbered(vertex_set members) const {
        for (vertex& v : members)
            v = static_cast<vertex>(std::ranges::lower_bound(vertices_, v) - vertices_.begin());
        return members;
    }

    static void link(vertex_set& neighbors, const vertex_set& added, vertex self) {
        vertex_set all;
        std::ranges::set_union(neighbors, added, std::back_inserter(all));
        std::erase(all, self);
        neighbors = std::move(all);
    }

    // A clique that is no more than a border lies in the one beyond it.
    void replace_taken(const clique_list& inner, const clique_list& borders) {
        clique_list changed;
        for (std::size_t clique = 0; clique < cliques_.size(); ++clique)
            if (!taken_[clique]) changed.push_back(std::move(cliques_[clique]));
        for (const vertex_set& clique : inner) {
            if (std::ranges::find(borders, clique) != borders.end()) continue;
            changed.emplace_back();
            for (const vertex v : clique) changed.back().push_back(vertices_[v]);
        }
        cliques_ = std::move(changed);
    }

    const graph& whole_;
    graph_pieces pieces_;
    clique_list& cliques_;
    search_work& work_;
    const piece_improver& improve_;
    std::vector<std::vector<std::size_t>> linked_;  // neighbours in the clique tree
    std::vector<char> taken_;                       // into the piece
    vertex_set vertices_;                           // of the piece
    std::set<std::pair<std::size_t, vertex_set>> tried_;
};

}  // namespace

void improve_pieces(const graph& connected, clique_list& cliques, search_work& work,
                    const piece_improver& improve) {
    improvement(connected, cliques, work, improve).run();
}

}  // namespace quarn
