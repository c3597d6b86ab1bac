// Reading, compiling and propagating whole networks: the example, and random sparse networks (two parents from the ten
// nearest earlier nodes) of growing size.
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <quarn.h>

#include "random_table.h"

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
        fill_table(node, random);
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

using change = void (*)(q_node_t observed, std::size_t step);

void select_state(q_node_t observed, std::size_t step) { q_node_select_state(observed, step % 2); }
void change_likelihood(q_node_t observed, std::size_t step) {
    q_node_enter_finding(observed, step % 2, step % 4 < 2 ? 0.5 : 0.25);
}
void enter_value(q_node_t observed, std::size_t step) {
    q_node_enter_value(observed, step % 2 == 0 ? 1 : -1);
}

// The evidence on one node changes, everything is propagated and one belief read.
void propagate(benchmark::State& state, q_domain_t domain, change next, q_equilibrium_t equilibrium,
               q_mode_t mode) {
    if (q_domain_compile(domain) != q_error_none) state.SkipWithError("the network was not compiled");
    q_node_t observed = q_domain_get_first_node(domain);
    std::size_t step = 0;
    for (auto _ : state) {
        next(observed, step++);
        if (q_domain_propagate(domain, equilibrium, mode) != q_error_none)
            state.SkipWithError("no propagation");
        benchmark::DoNotOptimize(q_node_get_belief(q_node_get_next(observed), 0));
    }
    std::size_t entries = 0;
    for (q_junction_tree_t tree = q_domain_get_first_junction_tree(domain); tree;
         tree = q_junction_tree_get_next(tree))
        entries += q_junction_tree_get_total_size(tree);
    state.counters["clique entries"] = static_cast<double>(entries);
    q_domain_delete(domain);
}
void propagate_sparse(benchmark::State& state, change next, q_equilibrium_t equilibrium, q_mode_t mode) {
    propagate(state, sparse_network(static_cast<std::size_t>(state.range(0))), next, equilibrium, mode);
}

// A chain of continuous nodes, each with a discrete parent of its own.
void propagate_continuous(benchmark::State& state, change next) {
    q_domain_t domain = q_domain_new();
    q_node_t last = nullptr;
    for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)); ++i) {
        q_node_t regime =
            i % 4 == 0 ? q_domain_new_node(domain, q_category_chance, q_kind_discrete) : nullptr;
        q_node_t node = q_domain_new_node(domain, q_category_chance, q_kind_continuous);
        if (regime != nullptr) {
            q_node_set_number_of_states(regime, 2);
            q_node_add_parent(node, regime);
        }
        if (last != nullptr && i % 16 != 0) {
            q_node_add_parent(node, last);
            for (std::size_t row = 0; row < (regime != nullptr ? 2 : 1); ++row)
                q_node_set_cg_coefficient(node, last, row, row == 0 ? 0.5 : -1);
        }
        for (std::size_t row = 0; row < (regime != nullptr ? 2 : 1); ++row) {
            q_node_set_cg_intercept(node, row, static_cast<double>(row));
            q_node_set_cg_variance(node, row, 1);
        }
        last = node;
    }
    propagate(state, domain, next, q_equilibrium_sum, q_mode_normal);
}

BENCHMARK(build)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
BENCHMARK(compile)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
// Another state is observed: from the saved tables; another likelihood: on top of what is there.
BENCHMARK_CAPTURE(propagate_sparse, state, select_state, q_equilibrium_sum, q_mode_normal)
    ->RangeMultiplier(10)
    ->Range(1000, 10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(propagate_sparse, likelihood, change_likelihood, q_equilibrium_sum, q_mode_normal)
    ->RangeMultiplier(10)
    ->Range(1000, 10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(propagate_sparse, maxima, change_likelihood, q_equilibrium_max, q_mode_normal)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(propagate_sparse, retraction, change_likelihood, q_equilibrium_sum, q_mode_fast_retraction)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(propagate_continuous, value, enter_value)->Arg(160)->Unit(benchmark::kMillisecond);

}  // namespace
