// Triangulation of plain graphs, checked against definitions.
#include "triangulation.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>

#include "clique_weight.h"
#include "elimination_graph.h"
#include "vertex_heap.h"

namespace {

using namespace quarn;
using testing::UnorderedElementsAreArray;

constexpr elimination_heuristic heuristics[] = {
    elimination_heuristic::clique_size, elimination_heuristic::clique_weight,
    elimination_heuristic::fill_in_size, elimination_heuristic::fill_in_weight};

graph random_graph(std::mt19937& random, std::size_t vertices, double density) {
    graph made{std::vector<vertex_set>(vertices), {}};
    for (vertex b = 0; b < vertices; ++b) {
        made.domains.push_back({1 + random() % 5, false});
        for (vertex a = 0; a < b; ++a)
            if (std::bernoulli_distribution(density)(random))
                made.neighbors[a].push_back(b), made.neighbors[b].push_back(a);
    }
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

// Holds all links, is triangulated, and no longer so without any one of the links it adds.
void expect_minimal_triangulation(const clique_list& cliques, const graph& start) {
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
            } else if (linked[a] >> b & 1) {
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
            expect_minimal_triangulation(found.back(), start);
        }
        expect_minimal_triangulation(cliques_of(start), start);
        const auto weight = [&](const clique_list& cliques) { return total_weight_of(start, cliques); };
        EXPECT_EQ(triangulate_by_best_heuristic(start).cliques, *std::ranges::min_element(found, {}, weight));
    }
}

TEST(Triangulation, OfGraphsThatCanBeDoneByHand) {
    // A square: elimination of a large corner links the small ones. Where costs are equal, vertex 0 goes first.
    graph square{{{1, 3}, {0, 2}, {1, 3}, {0, 2}}, {{2}, {10}, {2}, {10}}};
    EXPECT_EQ(total_weight_of(square, triangulate_by_elimination(square, heuristics[0]).cliques),
              2 * 10 * 10 * 2);
    EXPECT_THAT(cliques_of(square), UnorderedElementsAreArray(clique_list{{0, 1, 2}, {0, 2, 3}}));
    square.domains.assign(4, {3});
    EXPECT_THAT(cliques_of(square), UnorderedElementsAreArray(clique_list{{0, 1, 3}, {1, 2, 3}}));
    square.domains = {{2}, {3}, {1, true}, {1, true}};
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

}  // namespace
