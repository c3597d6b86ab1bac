// Reading, compiling and propagating whole networks: the example, and random sparse networks (two parents from the ten
// nearest earlier nodes) of growing size.
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <quarn.h>

namespace {

// Binary nodes with rows drawn at random.
q_domain_t sparse_network(std::size_t count) {
    std::mt19937 random(1);
    q_domain_t domain = q_domain_new();
    std::vector<q_node_t> nodes;
    for (std::size_t i = 0; i < count; ++i) {
        q_node_t node = q_domain_new_node(domain, q_category_chance, q_kind_discrete);
        q_node_set_number_of_states(node, 2);
        const std::size_t nearest = std::min<std::size_t>(i, 10);
        for (std::size_t parents = std::min<std::size_t>(nearest, 2); parents > 0;)
            if (q_node_add_parent(node, nodes[i - 1 - random() % nearest]) == q_error_none) --parents;
        q_table_t table = q_node_get_table(node);
        q_number_t* data = q_table_get_data(table);
        for (std::size_t entry = 0; entry < q_table_get_size(table); ++entry)
            data[entry] = static_cast<double>(1 + random() % 9);
        nodes.push_back(node);
    }
    return domain;
}

void build(benchmark::State& state) {
    for (auto _ : state) q_domain_delete(sparse_network(static_cast<std::size_t>(state.range(0))));
}

void compile(benchmark::State& state) {
    q_domain_t domain = sparse_network(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        q_domain_uncompile(domain);
        if (q_domain_compile(domain) != q_error_none) state.SkipWithError("the network was not compiled");
    }
    q_domain_delete(domain);
}

// One finding changes, everything is propagated and one belief read.
void propagate(benchmark::State& state) {
    q_domain_t domain = sparse_network(static_cast<std::size_t>(state.range(0)));
    q_domain_compile(domain);
    q_node_t observed = q_domain_get_first_node(domain);
    std::size_t finding = 0;
    for (auto _ : state) {
        q_node_select_state(observed, finding = 1 - finding);
        q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
        benchmark::DoNotOptimize(q_node_get_belief(q_node_get_next(observed), 0));
    }
    std::size_t entries = 0;
    for (q_junction_tree_t tree = q_domain_get_first_junction_tree(domain); tree;
         tree = q_junction_tree_get_next(tree))
        entries += q_junction_tree_get_total_size(tree);
    state.counters["clique entries"] = static_cast<double>(entries);
    q_domain_delete(domain);
}

BENCHMARK(build)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
BENCHMARK(compile)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
BENCHMARK(propagate)->RangeMultiplier(10)->Range(1000, 10000)->Unit(benchmark::kMillisecond);

}  // namespace
