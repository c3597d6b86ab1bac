// Triangulation of least total clique weight.
//
//   Maps     connected graph, known triangulations -> the best triangulation, optimal when no limit was met
//   Cost     that of listing the minimal separators and the potential maximal cliques, and for each of these cliques
//            the square of the number of components beyond it; all bounded by counting words
//   Method   dynamic programming over pieces [Bouchitte & Todinca 2001; Fomin, Kratsch, Todinca & Villanger 2008]: a
//            piece is a component beyond a minimal separator. It is triangulated by a potential maximal clique that
//            holds the separator and lies in it and the piece, and by the best that is known for the pieces beyond
//   Differs  cliques that cannot be part of anything better than what is known are left out. Before a search that is
//            long or need not end with the optimum, what is known is improved piecewise
#include "total_weight_search.h"

#include <algorithm>
#include <limits>
#include <tuple>

#include "clique_tree.h"
#include "clique_weight.h"
#include "piecewise_improvement.h"
#include "potential_maximal_cliques.h"

namespace quarn {
namespace {

constexpr double unreachable = std::numeric_limits<double>::infinity();
// In words.
constexpr uint64_t listing_work = 1'200'000'000;
constexpr uint64_t improvement_work = 1'000'000'000;
constexpr uint64_t piece_work = 30'000'000;
constexpr uint64_t complete_work = 1'500'000'000;  // with all minimal separators
constexpr uint64_t incomplete_work = 400'000'000;

constexpr std::size_t most_vertices = 4000;  // beyond, the sets alone cost too much
constexpr std::size_t kept_of_too_many = 300;
constexpr std::size_t few_separators = 500;  // a short search needs no better bound

class piece_programming {
public:
    piece_programming(const bit_graph& whole, const set_table& cliques, double bound, search_work& work)
        : whole_(whole),
          cliques_(cliques),
          bound_(bound),
          walk_(whole, work),
          all_(whole.first(whole.vertex_count())),
          pieces_(whole.words()) {
        pieces_.add(all_);
    }

    void run() {
        for (vertex v = 0; v < whole_.vertex_count(); ++v) {
            vertex_bits around = copy_of(whole_.neighbors(v));
            insert(around, v);
            least_weights_.push_back(whole_.weight_of(around));
        }
        for (std::size_t clique = 0; clique < cliques_.size(); ++clique) enter(clique);
        std::ranges::sort(choices_);
        costs_.assign(pieces_.size(), unreachable);
        chosen_.resize(pieces_.size());
        for (const auto& [size, piece, clique] : choices_) {
            double cost = whole_.weight_of(cliques_[clique]);
            for_each_smaller(clique, piece, [&](std::size_t smaller) { cost += costs_[smaller]; });
            if (!(cost < costs_[piece])) continue;
            costs_[piece] = cost;
            chosen_[piece] = clique;
        }
    }

    std::size_t piece_count() const noexcept { return pieces_.size(); }

    // Replaces a triangulation by the best one that was found when that is better than the bound.
    void improve(clique_list& best) const {
        if (!(costs_[0] < bound_)) return;
        best.clear();
        std::vector<std::size_t> open{0};
        while (!open.empty()) {
            const std::size_t piece = open.back();
            open.pop_back();
            best.push_back(whole_.to_vertices(cliques_[chosen_[piece]]));
            for_each_smaller(chosen_[piece], piece, [&](std::size_t smaller) { open.push_back(smaller); });
        }
    }

private:
    // A clique is a choice for the whole and, with its border towards a piece beyond it, for all on its own side of
    // that border. Something beyond it has a vertex all of whose neighbours form one more clique with it.
    void enter(std::size_t clique) {
        double least = whole_.weight_of(cliques_[clique]);
        std::vector<vertex_bits> components;
        std::vector<vertex_bits> borders;
        for (walk_.start(all_, cliques_[clique]); walk_.next();) {
            components.push_back(copy_of(walk_.component()));
            borders.push_back(copy_of(walk_.border()));
            double least_beyond = unreachable;
            for_each(components.back(),
                     [&](vertex v) { least_beyond = std::min(least_beyond, least_weights_[v]); });
            least += least_beyond;
        }
        if (least < bound_) {
            for (const vertex_bits& component : components) beyond_.push_back(pieces_.add(component));
            choices_.emplace_back(whole_.vertex_count(), 0, clique);
            for (const vertex_bits& border : borders) {
                vertex_bits side = all_;
                subtract(side, border);
                for (std::size_t other = 0; other < borders.size(); ++other)
                    if (is_subset(borders[other], border)) subtract(side, components[other]);
                choices_.emplace_back(count(side), pieces_.add(side), clique);
            }
        }
        ends_.push_back(beyond_.size());
    }

    template <class Visit>
    void for_each_smaller(std::size_t clique, std::size_t piece, Visit&& visit) const {
        for (std::size_t i = clique == 0 ? 0 : ends_[clique - 1]; i < ends_[clique]; ++i)
            if (is_subset(pieces_[beyond_[i]], pieces_[piece])) visit(beyond_[i]);
    }

    const bit_graph& whole_;
    const set_table& cliques_;
    double bound_;
    component_walk walk_;
    vertex_bits all_;
    std::vector<double> least_weights_;  // of the cliques that hold a vertex
    set_table pieces_;                   // the whole is the first
    std::vector<std::size_t> beyond_;    // the pieces beyond one clique after the other
    std::vector<std::size_t> ends_;
    std::vector<std::tuple<std::size_t, std::size_t, std::size_t>> choices_;  // size, piece, clique
    std::vector<double> costs_;
    std::vector<std::size_t> chosen_;
};

// The number of pieces.
std::size_t search(const bit_graph& whole, const set_table& separators, double bound, clique_list& best,
                   search_work& work) {
    const set_table cliques = find_potential_maximal_cliques(whole, separators, bound, work);
    piece_programming programming(whole, cliques, bound, work);
    programming.run();
    programming.improve(best);
    return programming.piece_count();
}

// Those of the best triangulation and the lightest ones.
set_table choose_separators(const bit_graph& whole, const set_table& found, const clique_list& best) {
    set_table kept(whole.words());
    const clique_forest tree = make_clique_forest(best, whole.vertex_count());
    for (std::size_t clique = 0; clique < best.size(); ++clique)
        if (const std::size_t parent = tree.parents[clique]; parent != no_clique) {
            vertex_set shared;
            std::ranges::set_intersection(best[clique], best[parent], std::back_inserter(shared));
            kept.add(whole.to_bits(shared));
        }
    std::vector<std::pair<double, std::size_t>> by_weight;
    for (std::size_t i = 0; i < found.size(); ++i) by_weight.emplace_back(whole.weight_of(found[i]), i);
    std::ranges::sort(by_weight);
    for (std::size_t i = 0; i < by_weight.size() && i < kept_of_too_many; ++i)
        kept.add(found[by_weight[i].second]);
    return kept;
}

void improve_piecewise(const graph& connected, const search_limits& limits, clique_list& best) {
    search_work work(improvement_work);
    improve_pieces(connected, best, work, [&](const graph& piece, clique_list& cliques) {
        search_work for_piece(std::min(piece_work, work.left()));
        const bit_graph whole(piece);
        const found_separators found = find_minimal_separators(whole, limits, for_piece);
        if (!found.are_more) search(whole, found.sets, total_weight_of(piece, cliques), cliques, for_piece);
        work.spend(for_piece.spent());
    });
}

}  // namespace

search_result search_total_weight(const graph& connected, const search_limits& limits,
                                  std::span<const clique_list> known) {
    const auto weight = [&](const clique_list& cliques) { return total_weight_of(connected, cliques); };
    search_result result;
    result.cliques =
        known.empty() ? triangulate_by_elimination(connected, elimination_heuristic::fill_in_weight).cliques
                      : *std::ranges::min_element(known, {}, weight);
    if (limits.separators > 0 && connected.vertex_count() <= most_vertices) {
        const bit_graph whole(connected);
        search_work listing(listing_work);
        found_separators found = find_minimal_separators(whole, limits, listing);
        result.separators_found = found.sets.size();
        result.were_large_ones = found.were_large_ones;
        result.found_all = !found.are_more && !found.were_large_ones;
        if (!result.found_all || found.sets.size() > few_separators)
            improve_piecewise(connected, limits, result.cliques);
        if (!result.found_all) found.sets = choose_separators(whole, found.sets, result.cliques);
        result.separators_kept = found.sets.size();
        search_work work(result.found_all ? complete_work : incomplete_work);
        result.pieces = search(whole, found.sets, weight(result.cliques), result.cliques, work);
        result.is_optimal = result.found_all && !work.is_over();
    }
    result.weight = weight(result.cliques);
    return result;
}

}  // namespace quarn
