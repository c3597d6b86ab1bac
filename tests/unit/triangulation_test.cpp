// Triangulation of plain graphs and the search for one of least weight, against definitions and all elimination orders.
#include "triangulation.h"

#include <algorithm>
#include <map>
#include <random>

#include <gmock/gmock.h>

#include "clique_weight.h"
#include "elimination_graph.h"
#include "total_weight_search.h"
#include "vertex_heap.h"

namespace {

using namespace quarn;
using testing::UnorderedElementsAreArray;

constexpr elimination_heuristic heuristics[] = {
    elimination_heuristic::clique_size, elimination_heuristic::clique_weight,
    elimination_heuristic::fill_in_size, elimination_heuristic::fill_in_weight};

// Connected ones: with at most two continuous vertices, as with more, triangulations that are not minimal can weigh less.
graph random_graph(std::mt19937& random, std::size_t vertices, double density, bool is_connected = false) {
    graph made{std::vector<vertex_set>(vertices), {}};
    std::bernoulli_distribution is_linked(density);
    for (vertex b = 0; b < vertices; ++b) {
        made.domains.push_back({1 + is_connected + random() % (5 - is_connected), false});
        const vertex surely = b == 0 || !is_connected ? b : random() % b;
        for (vertex a = 0; a < b; ++a)
            if (a == surely || is_linked(random))
                made.neighbors[a].push_back(b), made.neighbors[b].push_back(a);
    }
    for (vertex_set& neighbors : made.neighbors) std::ranges::sort(neighbors);
    for (auto left = is_connected ? random() % 3 : 0; left > 0; --left)
        made.domains[random() % vertices] = {1, true};
    return made;
}

clique_list cliques_of(const graph& start) {
    log_file none;
    triangulation_log log(none, {});
    triangulation_request asked{};
    asked.method = q_triangulate_best_greedy;
    asked.covers_all_nodes = false;
    return triangulate_domain(start, asked, log).cliques;
}

using masks = std::vector<uint32_t>;  // sets of vertices

// The maximal cliques of a graph whose vertices can all be removed, each while its neighbourhood is complete; none for
// graphs that are not triangulated. Each vertex counts among its neighbours.
masks cliques_if_triangulated(masks linked) {
    masks found;
    for (std::size_t left = linked.size(); left > 0; --left) {
        const auto next = std::ranges::find_if(linked, [&](uint32_t around) {
            for (vertex v = 0; v < linked.size(); ++v)
                if ((around >> v & 1) != 0 && (around & ~linked[v]) != 0) return false;
            return around != 0;
        });
        if (next == linked.end()) return {};
        const uint32_t clique = std::exchange(*next, 0);
        if (std::ranges::none_of(found, [&](uint32_t larger) { return (clique & ~larger) == 0; }))
            found.push_back(clique);
        for (uint32_t& around : linked) around &= ~(1u << (next - linked.begin()));
    }
    return found;
}

// Holds all links and is triangulated; if minimal, no longer so without any one of the links it adds.
void expect_triangulation(const clique_list& cliques, const graph& start, bool is_minimal = true) {
    masks listed;
    masks linked(start.vertex_count());
    for (const vertex_set& clique : cliques) {
        listed.push_back(0);
        for (const vertex v : clique) listed.back() |= 1u << v;
        for (const vertex v : clique) linked[v] |= listed.back();
    }
    EXPECT_THAT(cliques_if_triangulated(linked), UnorderedElementsAreArray(listed));
    for (vertex a = 0; a < start.vertex_count(); ++a)
        for (vertex b = 0; b < a; ++b) {
            if (std::ranges::binary_search(start.neighbors[a], b)) {
                EXPECT_TRUE(linked[a] >> b & 1) << "lost link " << a << " " << b;
            } else if (is_minimal && (linked[a] >> b & 1)) {
                masks without = linked;
                without[a] ^= 1u << b, without[b] ^= 1u << a;
                EXPECT_EQ(cliques_if_triangulated(without), masks()) << "redundant " << a << " " << b;
            }
        }
}

TEST(Triangulation, IsMinimalAndTheBestOnRandomGraphs) {
    for (unsigned seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph start = random_graph(random, 1 + seed % 16, 0.05 + 0.05 * (seed % 9));
        std::vector<clique_list> found;
        for (const elimination_heuristic heuristic : heuristics) {
            found.push_back(triangulate_by_elimination(start, heuristic).cliques);
            expect_triangulation(found.back(), start);
        }
        expect_triangulation(cliques_of(start), start);
        const auto weight = [&](const clique_list& cliques) { return total_weight_of(start, cliques); };
        EXPECT_EQ(triangulate_by_best_heuristic(start).cliques, *std::ranges::min_element(found, {}, weight));
    }
}

TEST(Triangulation, OfGraphsThatCanBeDoneByHand) {
    const graph square{{{1, 3}, {0, 2}, {1, 3}, {0, 2}}, {{2}, {3}, {1, true}, {1, true}}};
    EXPECT_EQ(weight_of(square, {0, 2, 3}), 2 * (1 + 2 + 3)) << "a number, means and covariances";
    // Vertex 0 goes first, then 5, then 2: what is left, 1, 3 and 4, is part of the first clique; 1 is not the last.
    const graph fan{{{1, 3, 4}, {0, 2, 3, 4}, {1}, {0, 1, 4, 5}, {0, 1, 3, 5}, {3, 4}},
                    std::vector<vertex_domain>(6)};
    EXPECT_EQ(triangulate_by_elimination(fan, heuristics[0]).cliques,
              (clique_list{{0, 1, 3, 4}, {1, 2}, {3, 4, 5}}));
}

// Counted anew after every change.
TEST(EliminationGraph, KeepsScoresThatKeepAQueueInOrder) {
    for (unsigned seed = 0; seed < 150; ++seed) {
        std::mt19937 random(seed);
        const graph start = random_graph(random, 16, 0.3);
        elimination_graph left(start, seed % 2 == 0);
        const auto missing = [&](vertex v) {
            std::vector<edge> found;
            for (const vertex b : left.neighbors(v))
                for (const vertex a : left.neighbors(v))
                    if (a < b && !left.adjacent(a, b)) found.push_back({a, b});
            return found;
        };
        const auto score = [&](vertex v) { return std::pair(left.fill_in(v), left.clique_weight_of(v)); };
        vertex_heap queue(std::vector<elimination_score>(16, {1, 0}), first_key::fill_in);
        for (vertex v = 0; v < 16; ++v) queue.change(v, {score(v).first, score(v).second});
        for (vertex next = 0; next < 16; ++next) {
            for (vertex v = next; v < 16; ++v) {
                uint64_t fill_in = 0;
                for (const auto& [a, b] : missing(v))
                    fill_in += seed % 2 == 0 ? start.domains[a].size * start.domains[b].size : 1;
                EXPECT_EQ(left.fill_in(v), fill_in);
                EXPECT_EQ(left.clique_weight_of(v),
                          weight_of(start, left.neighbors(v)) * double(start.domains[v].size));
                EXPECT_TRUE(left.fill_in(queue.top()) == 0 || score(queue.top()) <= score(v));
            }
            for (const auto& [a, b] : missing(next)) left.add_link(a, b);
            left.remove(next);
            queue.remove(next);
            for (const vertex v : left.take_changed()) queue.change(v, {score(v).first, score(v).second});
        }
    }
}

// Counts in sets of vertices as numbers.
class elimination_orders {
public:
    explicit elimination_orders(const graph& whole) : whole_(whole) {}

    std::size_t all() const { return (std::size_t{1} << whole_.vertex_count()) - 1; }

    vertex_set members(std::size_t set) const {
        vertex_set found;
        for (vertex v = 0; v < whole_.vertex_count(); ++v)
            if ((set >> v & 1) != 0) found.push_back(v);
        return found;
    }

    // A vertex with all that it is linked to through some others, and what these are linked to beyond.
    std::pair<std::size_t, std::size_t> component(vertex start, std::size_t through) const {
        std::size_t found = std::size_t{1} << start, around = 0;
        for (std::size_t before = 0; before != found; found |= around & through) {
            before = found;
            for (const vertex v : members(found))
                for (const vertex u : whole_.neighbors[v]) around |= std::size_t{1} << u;
        }
        return {found, around & ~found};
    }

    // The least weight of the cliques that eliminating some vertices before the others makes: the last one of them
    // one with what it is linked to through those before it, which counts unless it lies in one that these make.
    double least_weight(std::size_t first) {
        if (first == 0 || known_.contains(first)) return known_[first];
        double least = std::numeric_limits<double>::infinity();
        for (const vertex last : members(first)) {
            const std::size_t before = first & ~(std::size_t{1} << last);
            const std::size_t clique = component(last, before).second | std::size_t{1} << last;
            const vertex_set others = members(component(last, before).first & before);
            const bool is_part =
                std::ranges::any_of(others, [&](vertex v) { return component(v, before).second == clique; });
            least =
                std::min(least, least_weight(before) + (is_part ? 0 : weight_of(whole_, members(clique))));
        }
        return known_[first] = least;
    }

private:
    const graph& whole_;
    std::map<std::size_t, double> known_;
};

TEST(TotalWeightSearch, FindsTheBestOfAllEliminationOrders) {
    for (unsigned seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph whole = random_graph(random, 1 + seed % 9, 0.1 + 0.1 * double(random() % 6), true);
        elimination_orders orders(whole);
        const clique_list one_clique[] = {{orders.members(orders.all())}};
        const search_result found = search_total_weight(whole, {}, one_clique);
        EXPECT_TRUE(found.is_optimal);
        EXPECT_EQ(found.weight, orders.least_weight(orders.all()));
        EXPECT_EQ(found.weight, total_weight_of(whole, found.cliques));
        expect_triangulation(found.cliques, whole, false);
    }
}

// Sets of more than one word. Each square, with large corners where it meets the next one, gets a link between the
// small ones.
TEST(TotalWeightSearch, SolvesAChainOfSquares) {
    graph chain{std::vector<vertex_set>(67), std::vector<vertex_domain>(67, {2, false})};
    clique_list poor(1);
    for (vertex v = 0; v < 67; v += 3) chain.domains[v].size = 5;
    for (vertex v = 0; v < 67; poor[0].push_back(v++)) {
        const vertex_set links[] = {{v - 2, v - 1, v + 1, v + 2}, {v - 1, v + 2}, {v - 2, v + 1}};
        std::ranges::copy_if(links[v % 3], std::back_inserter(chain.neighbors[v]),
                             [](vertex u) { return u < 67; });
    }
    const search_result found = search_total_weight(chain, {}, {&poor, 1});
    EXPECT_TRUE(found.is_optimal);
    EXPECT_EQ(found.weight, 44 * 5 * 2 * 2);
    EXPECT_EQ(total_weight_of(chain, found.cliques), found.weight);
}

TEST(TotalWeightSearch, IsNeverWorseThanWhatIsKnown) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph whole = random_graph(random, 4 + seed % 18, 0.1 + 0.1 * double(random() % 6), true);
        graph denser = whole;  // so that what is known need not be minimal
        for (vertex a = 0, b = 2; b < whole.vertex_count(); ++a, ++b)
            if (!std::ranges::binary_search(denser.neighbors[a], b)) {
                denser.neighbors[a].insert(std::ranges::upper_bound(denser.neighbors[a], b), b);
                denser.neighbors[b].insert(std::ranges::upper_bound(denser.neighbors[b], a), a);
            }
        std::vector<clique_list> known;
        for (const auto heuristic :
             {elimination_heuristic::clique_size, elimination_heuristic::clique_weight})
            known.push_back(triangulate_by_elimination(denser, heuristic).cliques);
        const double best = std::min(total_weight_of(whole, known[0]), total_weight_of(whole, known[1]));
        const double optimum = search_total_weight(whole, {}, known).weight;
        for (const search_limits limits : {search_limits{0, 0}, {1, 0}, {3, 0}, {100000, 1}, {100000, 3}}) {
            const search_result found = search_total_weight(whole, limits, known);
            expect_triangulation(found.cliques, whole, false);
            EXPECT_LE(found.weight, best);
            EXPECT_LE(found.separators_found, limits.separators);
            EXPECT_TRUE(found.is_optimal ? found.weight == optimum : found.weight >= optimum);
        }
    }
}

}  // namespace
