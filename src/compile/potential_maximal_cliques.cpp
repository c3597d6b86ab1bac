// Potential maximal cliques of a growing graph.
//
//   Maps     connected graph, its minimal separators -> its potential maximal cliques
//   Cost     for each vertex a test (one walk over the graph) of all cliques and separators so far, and of pairs of
//            those separators that are new with the vertex and any other one
//   Method   [Bouchitte & Todinca 2002]. With a new vertex v a potential maximal clique is one of the smaller graph,
//            with or without v; or S + v; or S + (T cut with C) for minimal separators S and T of the larger graph and
//            a component C that is linked to all of S, where S is no minimal separator of the smaller one. S and T
//            cross: T meets all such C. The minimal separators of the smaller graph are among those of the larger
//            one without v
//   Differs  heavy sets are left out at once, since they stay so while the graph grows. Pairs get half of the work at
//            most, so that what they made can grow on
#include "potential_maximal_cliques.h"

#include <algorithm>

namespace quarn {
namespace {

constexpr std::size_t most_cliques = 500000;  // bounds the memory

class clique_search {
public:
    clique_search(const bit_graph& connected, const set_table& separators, double bound, search_work& work)
        : whole_(connected),
          separators_(separators),
          bound_(bound),
          work_(work),
          work_for_pairs_(work.spent() + work.left() / 2),
          walk_(connected, work),
          tested_(connected.words()),
          cliques_(connected.words()),
          candidate_(connected.words()),
          restricted_(connected.words()),
          covered_(connected.words()) {}

    set_table run() {
        find_first_sizes();
        vertices_ = whole_.first(1);
        cliques_.add(vertices_);
        vertex added = 1;
        for (; added < whole_.vertex_count() && !work_.is_over(); ++added) grow(added);
        if (added < whole_.vertex_count()) cliques_.clear();
        if (missed_pairs_) work_.spend(work_.left());
        return std::move(cliques_);
    }

private:
    // From which size of the graph on a separator, cut down to it, is minimal, and not the same as another one.
    void find_first_sizes() {
        first_sizes_.assign(separators_.size(), whole_.vertex_count());
        std::vector<std::size_t> left(separators_.size());
        for (std::size_t i = 0; i < left.size(); ++i) left[i] = i;
        for (std::size_t size = whole_.vertex_count(); size-- > 1 && !work_.is_over();) {
            vertices_ = whole_.first(size);
            tested_.clear();
            std::erase_if(left, [&](std::size_t separator) {
                restrict(separators_[separator]);
                const std::size_t before = tested_.size();
                if (tested_.add(restricted_) < before || !is_minimal_separator(vertices_, restricted_))
                    return true;
                first_sizes_[separator] = size;
                return false;
            });
        }
    }

    void restrict(bits_view separator) noexcept {
        for (std::size_t i = 0; i < separator.size(); ++i) restricted_[i] = separator[i] & vertices_[i];
    }

    void grow(vertex added) {
        const vertex_bits smaller = vertices_;
        insert(vertices_, added);
        const set_table before = std::exchange(cliques_, set_table(whole_.words()));
        for (std::size_t clique = 0; clique < before.size() && !work_.is_over(); ++clique) {
            std::ranges::copy(before[clique], candidate_.begin());
            if (add_if_potential()) continue;
            insert(candidate_, added);
            add_if_potential();
        }
        set_table current(whole_.words());
        for (std::size_t separator = 0; separator < separators_.size(); ++separator)
            if (first_sizes_[separator] <= added + 1) {
                restrict(separators_[separator]);
                current.add(restricted_);
            }
        for (std::size_t separator = 0; separator < current.size() && !work_.is_over(); ++separator) {
            const bits_view set = current[separator];
            if (!(whole_.weight_of(set) < bound_)) continue;
            std::ranges::copy(set, candidate_.begin());
            insert(candidate_, added);
            add_if_potential();
            if (!holds(set, added) && !is_minimal_separator(smaller, set)) add_pairs(set, current);
        }
    }

    void add_pairs(bits_view separator, const set_table& others) {
        std::vector<vertex_bits> sides;
        for (walk_.start(vertices_, separator); walk_.next();)
            if (equal(walk_.border(), separator)) sides.push_back(copy_of(walk_.component()));
        for (const vertex_bits& side : sides) {
            tested_.clear();
            for (std::size_t other = 0; other < others.size(); ++other) {
                if (work_.spent() >= work_for_pairs_) {
                    missed_pairs_ = true;
                    return;
                }
                const bits_view crossing = others[other];
                work_.spend(sides.size() * crossing.size());
                if (!std::ranges::all_of(sides,
                                         [&](const vertex_bits& met) { return intersect(met, crossing); }))
                    continue;
                for (std::size_t i = 0; i < crossing.size(); ++i)
                    candidate_[i] = separator[i] | (crossing[i] & side[i]);
                const std::size_t before = tested_.size();
                if (tested_.add(candidate_) == before) add_if_potential();
            }
        }
    }

    bool is_minimal_separator(bits_view vertices, bits_view tested) noexcept {
        std::size_t full = 0;
        for (walk_.start(vertices, tested); full < 2 && walk_.next();) full += equal(walk_.border(), tested);
        return full == 2;
    }

    bool add_if_potential() {
        work_.spend(10 * candidate_.size());
        if (!(whole_.weight_of(candidate_) < bound_) || !is_potential()) return false;
        cliques_.add(candidate_);
        if (cliques_.size() > most_cliques) work_.spend(work_.left());
        return true;
    }

    // No component is linked to all of the candidate, and any two vertices of it are linked to each other or both to
    // one component.
    bool is_potential() {
        borders_.clear();
        for (walk_.start(vertices_, candidate_); walk_.next();) {
            if (equal(walk_.border(), candidate_)) return false;
            borders_.insert(borders_.end(), walk_.border().begin(), walk_.border().end());
        }
        bool covered = true;
        for_each(candidate_, [&](vertex v) { covered = covered && is_covered_around(v); });
        return covered;
    }

    bool is_covered_around(vertex v) {
        std::ranges::copy(whole_.neighbors(v), covered_.begin());
        insert(covered_, v);
        for (std::size_t from = 0; from < borders_.size(); from += covered_.size())
            if (const bits_view border{borders_.data() + from, covered_.size()}; holds(border, v))
                unite(covered_, border);
        return is_subset(candidate_, covered_);
    }

    const bit_graph& whole_;
    const set_table& separators_;
    double bound_;
    search_work& work_;
    uint64_t work_for_pairs_;
    bool missed_pairs_ = false;
    component_walk walk_;
    std::vector<std::size_t> first_sizes_;
    set_table tested_;
    vertex_bits vertices_;  // of the graph so far
    set_table cliques_;     // of the graph so far
    vertex_bits candidate_;
    vertex_bits restricted_;
    std::vector<uint64_t> borders_;  // of the components beyond the candidate
    vertex_bits covered_;
};

}  // namespace

set_table find_potential_maximal_cliques(const bit_graph& connected, const set_table& separators,
                                         double bound, search_work& work) {
    return clique_search(connected, separators, bound, work).run();
}

}  // namespace quarn
