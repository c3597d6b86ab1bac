// The search for triangulations of least weight on random graphs in which every vertex has at least three neighbours,
// most of them near it in a circle, so that few of them fall apart.
#include "total_weight_search.h"

#include <random>

#include <benchmark/benchmark.h>

#include "triangulation.h"

namespace {

using namespace quarn;

graph random_graph(std::size_t vertices) {
    std::mt19937 random(1);
    graph made{std::vector<vertex_set>(vertices), {}};
    const auto link = [&](vertex a, vertex b) {
        const auto place = std::ranges::lower_bound(made.neighbors[a], b);
        if (a == b || (place != made.neighbors[a].end() && *place == b)) return;
        made.neighbors[a].insert(place, b);
        made.neighbors[b].insert(std::ranges::lower_bound(made.neighbors[b], a), a);
    };
    for (vertex v = 0; v < vertices; ++v) {
        made.domains.push_back({2 + random() % 4, false});
        link(v, (v + 1) % vertices);
        link(v, (v + 2 + random() % 4) % vertices);
    }
    for (std::size_t far = vertices / 10; far > 0; --far) link(random() % vertices, random() % vertices);
    return made;
}

void search(benchmark::State& state) {
    const graph whole = random_graph(static_cast<std::size_t>(state.range(0)));
    const clique_list greedy[] = {triangulate_by_best_heuristic(whole).cliques};
    const search_limits limits{static_cast<std::size_t>(state.range(1)), 0};
    search_result found;
    for (auto _ : state) found = search_total_weight(whole, limits, greedy);
    state.counters["separators"] = static_cast<double>(found.separators_found);
    state.counters["optimal"] = found.is_optimal;
    state.counters["weight"] = found.weight;
    state.counters["greedy"] = search_total_weight(whole, {0, 0}, greedy).weight;
}

BENCHMARK(search)
    ->ArgNames({"vertices", "limit"})
    ->ArgsProduct({{10, 20, 40, 80, 160}, {1000, 100000}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
