// Drawing configurations of a network of the size of common diagnostic ones: forward, and from junction trees; random
// numbers by themselves.
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <quarn.h>

#include "random_table.h"

namespace {

// 37 nodes of two to four states with up to three parents each, from the eight before.
q_domain_t diagnostic_network() {
    std::mt19937 random(1);
    q_domain_t domain = q_domain_new();
    std::vector<q_node_t> nodes;
    for (std::size_t i = 0; i < 37; ++i) {
        q_node_t node = q_domain_new_node(domain, q_category_chance, q_kind_discrete);
        q_node_set_number_of_states(node, 2 + random() % 3);
        const std::size_t nearest = std::min<std::size_t>(i, 8);
        for (std::size_t parents = random() % 4; parents > 0 && nearest > 0; --parents)
            q_node_add_parent(node, nodes[i - 1 - random() % nearest]);
        fill_table(node, random);
        nodes.push_back(node);
    }
    return domain;
}

void simulate(benchmark::State& state, bool compiled) {
    q_domain_t domain = diagnostic_network();
    if (compiled) {
        q_domain_compile(domain);
        q_node_select_state(q_domain_get_first_node(domain), 0);
        q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
    }
    for (auto _ : state)
        if (q_domain_simulate(domain) != q_error_none) return state.SkipWithError("nothing was drawn");
    state.SetItemsProcessed(state.iterations());
    q_domain_delete(domain);
}

void uniform(benchmark::State& state) {
    q_domain_t domain = q_domain_new();
    for (auto _ : state) benchmark::DoNotOptimize(q_domain_get_uniform_random(domain));
    q_domain_delete(domain);
}

void normal(benchmark::State& state) {
    q_domain_t domain = q_domain_new();
    for (auto _ : state) benchmark::DoNotOptimize(q_domain_get_normal_random(domain, 0, 1));
    q_domain_delete(domain);
}

BENCHMARK_CAPTURE(simulate, forward, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(simulate, junction_tree, true)->Unit(benchmark::kMicrosecond);
BENCHMARK(uniform);
BENCHMARK(normal);

}  // namespace
