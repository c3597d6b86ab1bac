// Triangulation of plain graphs, checked against definitions.
#include "triangulation.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "clique_tree.h"
#include "clique_weight.h"
#include "elimination_graph.h"
#include "redundant_fill_ins.h"
#include "vertex_heap.h"

namespace {

using namespace quarn;

constexpr unsigned seed_count = 150;
constexpr elimination_heuristic heuristics[] = {
    elimination_heuristic::clique_size, elimination_heuristic::clique_weight,
    elimination_heuristic::fill_in_size, elimination_heuristic::fill_in_weight};

graph make_graph(const std::vector<std::size_t>& sizes, const std::vector<edge>& links) {
    graph made{std::vector<vertex_set>(sizes.size()), {}};
    for (const std::size_t size : sizes) made.domains.push_back({size, false});
    for (const edge& link : links) {
        made.neighbors[link.first].push_back(link.second);
        made.neighbors[link.second].push_back(link.first);
    }
    for (vertex_set& neighbors : made.neighbors) std::ranges::sort(neighbors);
    return made;
}

graph random_graph(std::mt19937& random, std::size_t vertices, double density) {
    std::vector<std::size_t> sizes(vertices);
    for (std::size_t& size : sizes) size = 1 + random() % 5;
    std::vector<edge> links;
    for (vertex b = 0; b < vertices; ++b)
        for (vertex a = 0; a < b; ++a)
            if (std::bernoulli_distribution(density)(random)) links.push_back({a, b});
    return make_graph(sizes, links);
}

using matrix = std::vector<std::vector<bool>>;

matrix adjacency(const graph& shown) {
    matrix linked(shown.vertex_count(), std::vector<bool>(shown.vertex_count()));
    for (vertex a = 0; a < shown.vertex_count(); ++a)
        for (const vertex b : shown.neighbors[a]) linked[a][b] = true;
    return linked;
}

matrix union_of(const clique_list& cliques, std::size_t vertices) {
    matrix linked(vertices, std::vector<bool>(vertices));
    for (const vertex_set& clique : cliques)
        for (const vertex a : clique)
            for (const vertex b : clique) linked[a][b] = a != b;
    return linked;
}

// By the definition of a perfect elimination order: vertices with complete neighbourhoods can be removed to the end.
bool is_triangulated(matrix linked) {
    const std::size_t count = linked.size();
    std::vector<bool> removed(count);
    const auto is_simplicial = [&](vertex v) {
        for (vertex a = 0; a < count; ++a)
            for (vertex b = 0; b < a; ++b)
                if (linked[v][a] && linked[v][b] && !linked[a][b]) return false;
        return true;
    };
    for (std::size_t left = count; left > 0; --left) {
        vertex next = 0;
        while (next < count && (removed[next] || !is_simplicial(next))) ++next;
        if (next == count) return false;
        removed[next] = true;
        for (vertex v = 0; v < count; ++v) linked[v][next] = linked[next][v] = false;
    }
    return true;
}

void expect_maximal_cliques(const clique_list& cliques, const matrix& linked) {
    for (const vertex_set& clique : cliques) {
        EXPECT_TRUE(std::ranges::is_sorted(clique));
        for (vertex v = 0; v < linked.size(); ++v)
            EXPECT_FALSE(std::ranges::all_of(clique, [&](vertex member) { return linked[v][member]; }))
                << "a clique could be extended by " << v;
    }
    clique_list sorted = cliques;
    std::ranges::sort(sorted);
    EXPECT_EQ(std::ranges::adjacent_find(sorted), sorted.end()) << "a clique is listed twice";
}

// Holds all links, is triangulated, and no longer so without any one of the links it adds.
void expect_minimal_triangulation(const clique_list& cliques, const graph& start) {
    const matrix before = adjacency(start);
    matrix after = union_of(cliques, start.vertex_count());
    EXPECT_TRUE(is_triangulated(after));
    expect_maximal_cliques(cliques, after);
    for (vertex a = 0; a < start.vertex_count(); ++a)
        for (vertex b = 0; b < a; ++b) {
            EXPECT_TRUE(after[a][b] || !before[a][b]) << "lost link " << a << " " << b;
            if (!after[a][b] || before[a][b]) continue;
            after[a][b] = after[b][a] = false;
            EXPECT_FALSE(is_triangulated(after)) << "redundant fill-in " << a << " " << b;
            after[a][b] = after[b][a] = true;
        }
}

TEST(Triangulation, IsMinimalAndTheBestOnRandomGraphs) {
    for (unsigned seed = 0; seed < seed_count; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph start = random_graph(random, 1 + seed % 16, 0.05 + 0.05 * (seed % 9));
        std::vector<clique_list> found;
        for (const elimination_heuristic heuristic : heuristics) {
            found.push_back(triangulate_by_elimination(start, heuristic));
            expect_minimal_triangulation(found.back(), start);
        }
        expect_minimal_triangulation(triangulate(start), start);
        const auto weight = [&](const clique_list& cliques) { return total_weight_of(start, cliques); };
        EXPECT_EQ(triangulate_by_best_heuristic(start), *std::ranges::min_element(found, {}, weight));
    }
}

// How the sum of weights compares for a square with two large corners opposite to each other: elimination of a large
// corner links the small ones.
TEST(Triangulation, BestHeuristicHasTheLowestTotalWeight) {
    const std::vector<edge> square{{0, 1}, {1, 2}, {2, 3}, {0, 3}};
    const clique_list links_1_and_3{{0, 1, 3}, {1, 2, 3}};
    const clique_list links_0_and_2{{0, 1, 2}, {0, 2, 3}};
    const struct {
        std::vector<std::size_t> sizes;
        double by_clique_size, best;
        clique_list cliques;
    } cases[] = {
        {{2, 10, 2, 10}, 400, 80, links_0_and_2},
        {{10, 2, 10, 2}, 80, 80, links_1_and_3},
        {{3, 3, 3, 3},
         54,
         54,
         links_1_and_3},  // equal costs: the first heuristic, which starts with vertex 0
    };
    for (const auto& [sizes, by_clique_size, best, cliques] : cases) {
        const graph start = make_graph(sizes, square);
        EXPECT_EQ(total_weight_of(start, triangulate_by_elimination(start, heuristics[0])), by_clique_size);
        clique_list found = triangulate(start);
        EXPECT_EQ(total_weight_of(start, found), best);
        std::ranges::sort(found);
        EXPECT_EQ(found, cliques);
    }
}

// Vertex 0 goes first, then 5, then 2: what is left, 1, 3 and 4, is part of the first clique, and 1 is not the last.
TEST(Triangulation, LastCliqueHoldsTheLastVertex) {
    const graph start = make_graph({2, 2, 2, 2, 2, 2},
                                   {{0, 1}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}, {3, 4}, {3, 5}, {4, 5}});
    const clique_list expected{{0, 1, 3, 4}, {1, 2}, {3, 4, 5}};
    EXPECT_EQ(triangulate_by_elimination(start, heuristics[0]), expected);
}

// The vertices of a complete graph from which a random tree is to be left.
TEST(RedundantFillIns, AreRemovedUntilNoneIsLeft) {
    for (unsigned seed = 0; seed < seed_count; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const std::size_t vertices = 2 + seed % 9;
        clique_list tree;
        std::vector<edge> fill_ins;
        for (vertex b = 1; b < vertices; ++b) {
            const vertex parent = random() % b;
            tree.push_back({parent, b});
            for (vertex a = 0; a < b; ++a)
                if (a != parent) fill_ins.push_back({a, b});
        }
        std::ranges::shuffle(fill_ins, random);
        vertex_set all(vertices);
        for (vertex v = 0; v < vertices; ++v) all[v] = v;
        clique_list cliques{all};
        remove_redundant_fill_ins(cliques, fill_ins, vertices);
        std::ranges::sort(cliques);
        std::ranges::sort(tree);
        EXPECT_EQ(cliques, tree);
    }
}

TEST(CliqueForest, HasTheRunningIntersectionProperty) {
    for (unsigned seed = 0; seed < seed_count; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph start = random_graph(random, 1 + seed / 2, seed % 2 == 0 ? 0.03 : 0.15);
        const clique_list cliques = triangulate(start);
        const clique_forest forest = make_clique_forest(cliques, start.vertex_count());

        // Connected in the tree: one more clique than links between them.
        std::vector<std::ptrdiff_t> parts(start.vertex_count());
        std::vector<bool> seen(cliques.size());
        std::size_t roots = 0;
        for (const std::size_t clique : forest.bottom_up) {
            seen[clique] = true;
            for (const vertex member : cliques[clique]) ++parts[member];
            const std::size_t parent = forest.parents[clique];
            roots += parent == no_clique;
            if (parent == no_clique) continue;
            EXPECT_FALSE(seen[parent]);
            for (const vertex member : cliques[clique])
                parts[member] -= std::ranges::count(cliques[parent], member);
        }
        EXPECT_EQ(parts, std::vector<std::ptrdiff_t>(start.vertex_count(), 1));
        EXPECT_EQ(forest.bottom_up.size(), cliques.size());
        EXPECT_EQ(roots, connected_components(start).size());
        EXPECT_EQ(forest.parents.back(), no_clique);
    }
}

// Counted anew after every change, on graphs that are eliminated in random orders.
TEST(EliminationGraph, KeepsFillInAndWeights) {
    for (unsigned seed = 0; seed < seed_count; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const graph start = random_graph(random, 12, 0.4);
        const bool weighted = seed % 2 == 0;
        elimination_graph left(start, weighted);
        for (std::size_t step = 0;; ++step) {
            std::vector<vertex> present;
            for (vertex v = 0; v < start.vertex_count(); ++v)
                if (left.contains(v)) present.push_back(v);
            if (present.empty()) break;
            for (const vertex v : present) {
                const vertex_set around = left.neighbors(v);
                uint64_t fill_in = 0;
                double weight = static_cast<double>(start.domains[v].size);
                for (const vertex b : around) {
                    weight *= static_cast<double>(start.domains[b].size);
                    for (const vertex a : around)
                        if (a < b && !left.adjacent(a, b))
                            fill_in += weighted ? start.domains[a].size * start.domains[b].size : 1;
                }
                EXPECT_EQ(left.fill_in(v), fill_in);
                EXPECT_EQ(left.degree(v), around.size());
                EXPECT_EQ(left.clique_weight_of(v), weight);
            }
            const vertex next = present[random() % present.size()];
            for (const vertex b : left.neighbors(next))
                for (const vertex a : left.neighbors(next))
                    if (a < b && !left.adjacent(a, b)) left.add_link(a, b);
            left.remove(next);
        }
    }
}

TEST(CliqueWeight, CountsNumbersMeansAndCovariances) {
    const std::size_t huge = std::size_t{1} << 63;
    const struct {
        std::vector<vertex_domain> members;
        double weight;
    } cases[] = {
        {{{1, true}}, 3},
        {{{2, false}, {3, false}}, 6},
        {{{2, false}, {1, true}, {1, true}}, 2 * (1 + 2 + 3)},
        {{{huge, false}, {huge, false}, {2, false}}, 0x1p127},
    };
    for (const auto& [members, weight] : cases) {
        graph whole{std::vector<vertex_set>(members.size()), members};
        vertex_set all;
        for (vertex v = 0; v < members.size(); ++v) all.push_back(v);
        EXPECT_EQ(weight_of(whole, all), weight);
    }
}

TEST(EliminationGraph, WeightOfAHubIsInfiniteAsItsProductIs) {
    std::vector<edge> links;
    for (vertex leaf = 1; leaf < 1024; ++leaf) links.push_back({0, leaf});
    const graph star = make_graph(std::vector<std::size_t>(1024, 2), links);
    elimination_graph left(star, true);
    EXPECT_EQ(left.clique_weight_of(0), HUGE_VAL);
    left.remove(7);
    EXPECT_EQ(left.clique_weight_of(0), 0x1p1023);
}

std::vector<vertex> drained(vertex_heap& heap) {
    std::vector<vertex> order;
    for (; !heap.empty(); heap.remove(heap.top())) order.push_back(heap.top());
    return order;
}

TEST(VertexHeap, OrdersByKeysThenByPlace) {
    const struct {
        const char* what;
        first_key key;
        std::vector<elimination_score> scores;
        std::vector<vertex> order;
    } cases[] = {
        {"clique first", first_key::clique, {{1, 5}, {9, 3}, {4, 3}}, {2, 1, 0}},
        {"fill-in first", first_key::fill_in, {{1, 5}, {9, 3}, {1, 3}}, {2, 0, 1}},
        {"no fill-in beats all", first_key::clique, {{2, 2}, {0, 100}, {1, 1}}, {1, 2, 0}},
        {"no fill-in, no order", first_key::fill_in, {{0, 9}, {0, 1}, {0, 5}}, {0, 2, 1}},
        {"equal: the last moves to the top",
         first_key::clique,
         {{1, 1}, {1, 1}, {1, 1}, {1, 1}},
         {0, 3, 2, 1}},
    };
    for (const auto& [what, key, scores, order] : cases) {
        vertex_heap heap(scores, key);
        EXPECT_EQ(drained(heap), order) << what;
    }
}

TEST(VertexHeap, StaysInOrderUnderChangesAndRemovals) {
    for (unsigned seed = 0; seed < seed_count; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<elimination_score> scores(40);
        for (elimination_score& score : scores) score = {1 + random() % 9, static_cast<double>(random())};
        vertex_heap heap(scores, first_key::fill_in);
        std::size_t left = scores.size();
        for (int change = 0; change < 100; ++change) {
            const vertex changed = random() % scores.size();
            if (scores[changed].fill_in == 0) continue;
            scores[changed].fill_in = random() % 9;
            if (scores[changed].fill_in > 0) {
                heap.change(changed, scores[changed]);
            } else {
                heap.remove(changed);
                --left;
            }
        }
        const std::vector<vertex> order = drained(heap);
        EXPECT_EQ(order.size(), left);
        EXPECT_TRUE(std::ranges::is_sorted(
            order, {}, [&](vertex v) { return std::pair(scores[v].fill_in, scores[v].clique); }));
    }
}

}  // namespace
