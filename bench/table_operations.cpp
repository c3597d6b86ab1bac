// The operations between a clique's table and a smaller one, each beside an index walk over single entries. The shapes
// are what separators and evidence look like: nodes kept at the end (long runs), at the front, and interleaved.
#include "table_operations.h"

#include <numeric>
#include <vector>

#include <benchmark/benchmark.h>

#include "domain.h"
#include "kernels.h"
#include "node.h"

namespace {

using namespace quarn;

enum shape { trailing, leading, interleaved };

// A table over 8 nodes of 5 states (390,625 entries) and one over 4 of them.
struct operands {
    explicit operands(shape kept) {
        for (int i = 0; i < 8; ++i) {
            node& added = create_node(owner, q_category_chance, q_kind_discrete);
            added.state_count = 5;
            nodes.push_back(&added);
        }
        for (std::size_t i = 0; i < 4; ++i)
            kept_nodes.push_back(nodes[kept == trailing ? 4 + i : kept == leading ? i : 2 * i]);
        plan = make_loop_plan(nodes, kept_nodes);
        larger = number_array(configurations(nodes));
        smaller = number_array(configurations(kept_nodes));
        std::fill(larger.begin(), larger.end(), 1.0);
        std::fill(smaller.begin(), smaller.end(), 1.0);
    }

    domain owner;
    std::vector<node*> nodes, kept_nodes;
    loop_plan plan;
    number_array larger, smaller;
};

void count_entries(benchmark::State& state, const operands& used) {
    const auto entries = static_cast<int64_t>(used.larger.size());
    state.SetItemsProcessed(state.iterations() * entries);
    state.SetBytesProcessed(state.iterations() * entries * static_cast<int64_t>(sizeof(double)));
}

void multiply_by_plan(benchmark::State& state) {
    operands used(static_cast<shape>(state.range(0)));
    for (auto _ : state) {
        multiply(used.plan, used.larger.data(), used.smaller.data());
        benchmark::ClobberMemory();
    }
    count_entries(state, used);
}

void marginal_by_plan(benchmark::State& state) {
    operands used(static_cast<shape>(state.range(0)));
    for (auto _ : state) {
        sum_marginal(used.plan, used.larger.data(), used.smaller.data(), used.smaller.size());
        benchmark::ClobberMemory();
    }
    count_entries(state, used);
}

// What the plan saves: the place in the smaller table is worked out anew for each entry.
void multiply_by_index(benchmark::State& state) {
    operands used(static_cast<shape>(state.range(0)));
    for (auto _ : state) {
        for (std::size_t i = 0; i < used.larger.size(); ++i) {
            std::size_t rest = i, place = 0;
            for (std::size_t level = used.plan.levels.size(); level-- > 0;) {
                place += rest % used.plan.levels[level].count * used.plan.levels[level].source_stride;
                rest /= used.plan.levels[level].count;
            }
            used.larger[i] *= used.smaller[place];
        }
        benchmark::ClobberMemory();
    }
    count_entries(state, used);
}

// The machine's own rate in the same run: scaling in place, nothing else.
void streaming(benchmark::State& state) {
    operands used(trailing);
    for (auto _ : state) {
        scale(used.larger.data(), used.larger.size(), 1.0);
        benchmark::ClobberMemory();
    }
    count_entries(state, used);
}

BENCHMARK(streaming);
BENCHMARK(multiply_by_plan)->ArgName("shape")->DenseRange(trailing, interleaved);
BENCHMARK(marginal_by_plan)->ArgName("shape")->DenseRange(trailing, interleaved);
BENCHMARK(multiply_by_index)->ArgName("shape")->DenseRange(trailing, interleaved);

}  // namespace
