// The search for triangulations of least weight, against definitions and all elimination orders.
#include "total_weight_search.h"

#include <algorithm>
#include <map>
#include <random>

#include <gmock/gmock.h>

#include "clique_weight.h"

namespace {

using namespace quarn;
using testing::UnorderedElementsAreArray;

// At most two continuous vertices: with more, triangulations that are not minimal can weigh less.
graph random_connected_graph(std::mt19937& random, std::size_t vertices) {
    graph made{std::vector<vertex_set>(vertices), {}};
    std::bernoulli_distribution is_linked(0.1 + 0.1 * static_cast<double>(random() % 6));
    for (vertex b = 0; b < vertices; ++b) {
        made.domains.push_back({2 + random() % 4, false});
        const vertex surely = b == 0 ? 0 : random() % b;
        for (vertex a = 0; a < b; ++a)
            if (a == surely || is_linked(random))
                made.neighbors[a].push_back(b), made.neighbors[b].push_back(a);
    }
    for (vertex_set& neighbors : made.neighbors) std::ranges::sort(neighbors);
    for (auto left = random() % 3; left > 0; --left) made.domains[random() % vertices] = {1, true};
    return made;
}

vertex_set united(const vertex_set& a, const vertex_set& b) {
    vertex_set both;
    std::ranges::set_union(a, b, std::back_inserter(both));
    return both;
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

void expect_triangulation(const graph& whole, const clique_list& cliques) {
    graph filled{std::vector<vertex_set>(whole.vertex_count()), whole.domains};
    for (const vertex_set& clique : cliques)
        for (const vertex v : clique) filled.neighbors[v] = united(filled.neighbors[v], clique);
    for (vertex v = 0; v < whole.vertex_count(); ++v) {
        EXPECT_TRUE(std::ranges::includes(filled.neighbors[v], whole.neighbors[v])) << "lost links of " << v;
        std::erase(filled.neighbors[v], v);
    }
    // Elimination fills in nothing just when the graph is triangulated.
    const auto maximal = triangulate_by_elimination(filled, elimination_heuristic::fill_in_size).cliques;
    EXPECT_THAT(cliques, UnorderedElementsAreArray(maximal));
}

TEST(TotalWeightSearch, FindsTheBestOfAllEliminationOrders) {
    for (unsigned seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph whole = random_connected_graph(random, 1 + seed % 9);
        elimination_orders orders(whole);
        const clique_list one_clique[] = {{orders.members(orders.all())}};
        const search_result found = search_total_weight(whole, {}, one_clique);
        EXPECT_TRUE(found.is_optimal);
        EXPECT_EQ(found.weight, orders.least_weight(orders.all()));
        EXPECT_EQ(found.weight, total_weight_of(whole, found.cliques));
        expect_triangulation(whole, found.cliques);
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
    expect_triangulation(chain, found.cliques);
}

TEST(TotalWeightSearch, IsNeverWorseThanWhatIsKnown) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph whole = random_connected_graph(random, 4 + seed % 18);
        graph denser = whole;  // so that what is known need not be minimal
        for (vertex a = 0, b = 2; b < whole.vertex_count(); ++a, ++b) {
            denser.neighbors[a] = united(denser.neighbors[a], {b});
            denser.neighbors[b] = united(denser.neighbors[b], {a});
        }
        std::vector<clique_list> known;
        for (const auto heuristic :
             {elimination_heuristic::clique_size, elimination_heuristic::clique_weight})
            known.push_back(triangulate_by_elimination(denser, heuristic).cliques);
        const double best = std::min(total_weight_of(whole, known[0]), total_weight_of(whole, known[1]));
        const double optimum = search_total_weight(whole, {}, known).weight;
        for (const search_limits limits : {search_limits{0, 0}, {1, 0}, {3, 0}, {100000, 1}, {100000, 3}}) {
            const search_result found = search_total_weight(whole, limits, known);
            expect_triangulation(whole, found.cliques);
            EXPECT_LE(found.weight, best);
            EXPECT_LE(found.separators_found, limits.separators);
            EXPECT_TRUE(found.is_optimal ? found.weight == optimum : found.weight >= optimum);
        }
    }
}

}  // namespace
