// Making a triangulation minimal.
//
//   Maps     maximal cliques of a triangulated graph, fill-in links -> maximal cliques without the redundant links
//   Cost     for each link the cliques of that end which lies in fewer of them; after a removal the links of its ends
//            to the rest of their clique are looked at again
//   Method   recursive thinning [Kjaerulff 1990]. A link can be left out of a triangulated graph just when its ends
//            share only one maximal clique: that clique falls into two, without the one and without the other end.
//            A triangulation from which no single link can be left out is minimal [Rose, Tarjan & Lueker 1976]
#include "redundant_fill_ins.h"

#include <algorithm>

namespace quarn {
namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

bool holds(const vertex_set& clique, vertex v) noexcept { return std::ranges::binary_search(clique, v); }

class thinning {
public:
    thinning(clique_list& cliques, std::vector<edge> fill_ins, std::size_t vertex_count)
        : cliques_(cliques), cliques_of_(vertex_count), fill_ins_(std::move(fill_ins)) {
        std::ranges::sort(fill_ins_);
        states_.assign(fill_ins_.size(), link_state::queued);
        for (std::size_t i = 0; i < fill_ins_.size(); ++i) queue_.push_back(i);
        for (std::size_t clique = 0; clique < cliques.size(); ++clique) enter(clique);
    }

    void run() {
        for (std::size_t next = 0; next < queue_.size(); ++next) {
            const std::size_t link = queue_[next];
            states_[link] = link_state::kept;
            const std::size_t clique = only_clique_of(fill_ins_[link]);
            if (clique == none) continue;
            states_[link] = link_state::removed;
            removed_.push_back(fill_ins_[link]);
            requeue_neighbors(fill_ins_[link], cliques_[clique]);
            split(clique, fill_ins_[link]);
        }
        std::erase_if(cliques_, [](const vertex_set& clique) { return clique.empty(); });
    }

    std::vector<edge>& removed() noexcept { return removed_; }

private:
    enum class link_state : unsigned char { queued, kept, removed };

    void enter(std::size_t clique) {
        for (const vertex member : cliques_[clique]) cliques_of_[member].push_back(clique);
    }

    void leave(std::size_t clique, vertex member) noexcept { std::erase(cliques_of_[member], clique); }

    const std::vector<std::size_t>& fewer_cliques(vertex a, vertex b) const noexcept {
        return cliques_of_[a].size() < cliques_of_[b].size() ? cliques_of_[a] : cliques_of_[b];
    }

    // The clique that holds both ends when there is just one.
    std::size_t only_clique_of(const edge& link) const noexcept {
        std::size_t found = none;
        for (const std::size_t clique : fewer_cliques(link.first, link.second)) {
            if (!holds(cliques_[clique], link.first) || !holds(cliques_[clique], link.second)) continue;
            if (found != none) return none;
            found = clique;
        }
        return found;
    }

    // The ends of a removed link were common neighbours of these links, which may be redundant without them.
    void requeue_neighbors(const edge& removed, const vertex_set& clique) {
        for (const vertex member : clique)
            for (const vertex end : {removed.first, removed.second})
                requeue({std::min(member, end), std::max(member, end)});
    }

    void requeue(const edge& link) {
        const auto found = std::ranges::lower_bound(fill_ins_, link);
        if (found == fill_ins_.end() || *found != link) return;
        const auto position = static_cast<std::size_t>(found - fill_ins_.begin());
        if (states_[position] != link_state::kept) return;
        states_[position] = link_state::queued;
        queue_.push_back(position);
    }

    void split(std::size_t clique, const edge& link) {
        vertex_set second = cliques_[clique];
        std::erase(second, link.first);
        leave(clique, link.second);
        std::erase(cliques_[clique], link.second);
        if (lies_in_another(clique)) drop(clique);

        cliques_.push_back(std::move(second));
        enter(cliques_.size() - 1);
        if (lies_in_another(cliques_.size() - 1)) drop(cliques_.size() - 1);
    }

    bool lies_in_another(std::size_t tested) const noexcept {
        const vertex_set& members = cliques_[tested];
        const auto rarest =
            std::ranges::min_element(members, {}, [&](vertex v) { return cliques_of_[v].size(); });
        return std::ranges::any_of(cliques_of_[*rarest], [&](std::size_t other) {
            return other != tested && std::ranges::includes(cliques_[other], members);
        });
    }

    void drop(std::size_t clique) noexcept {
        for (const vertex member : cliques_[clique]) leave(clique, member);
        cliques_[clique].clear();
    }

    clique_list& cliques_;  // those dropped are empty
    std::vector<std::vector<std::size_t>> cliques_of_;
    std::vector<edge> fill_ins_;  // ascending
    std::vector<link_state> states_;
    std::vector<std::size_t> queue_;
    std::vector<edge> removed_;
};

}  // namespace

std::vector<edge> remove_redundant_fill_ins(clique_list& cliques, std::vector<edge> fill_ins,
                                            std::size_t vertex_count) {
    thinning thinned(cliques, std::move(fill_ins), vertex_count);
    thinned.run();
    return std::move(thinned.removed());
}

}  // namespace quarn
