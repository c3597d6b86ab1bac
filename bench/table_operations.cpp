// Every operation between two tables, in every shape, beside a walk over single entries by index; and what the machine
// itself does with a table of that size, scaling it in place and summing it up. Items are entries of the larger table;
// bytes are those that must be read or written.
#include "table_operations.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "domain.h"
#include "kernels.h"
#include "node.h"

namespace {

using namespace quarn;

// Which nodes of a table the smaller one keeps, and in which order.
struct shape {
    const char* name;
    std::vector<std::size_t> states;
    std::vector<std::size_t> kept;
};

std::vector<std::size_t> all_of(std::size_t count) {
    std::vector<std::size_t> all(count);
    std::iota(all.begin(), all.end(), std::size_t{0});
    return all;
}
std::vector<std::size_t> every_second(std::size_t count, std::size_t first) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = first; i < count; i += 2) chosen.push_back(i);
    return chosen;
}
std::vector<std::size_t> reversed(std::vector<std::size_t> order) {
    std::reverse(order.begin(), order.end());
    return order;
}

const std::vector<shape>& shapes() {
    const std::vector<std::size_t> fives(8, 5), twos(18, 2), big_twos(24, 2), small{2, 3, 2, 4};
    static const std::vector<shape> all{
        {"small_trailing", small, {2, 3}},
        {"small_leading", small, {0, 1}},
        {"small_interleaved", small, {1, 3}},
        {"same", fives, all_of(8)},
        {"scalar", fives, {}},
        {"trailing", fives, {4, 5, 6, 7}},
        {"leading", fives, {0, 1, 2, 3}},
        {"one_node_left_out", fives, {0, 1, 2, 4, 5, 6, 7}},
        {"interleaved", fives, every_second(8, 0)},
        {"interleaved_twos", twos, every_second(18, 0)},
        {"interleaved_twos_kept_last", twos, every_second(18, 1)},
        {"reversed", fives, reversed(all_of(8))},
        {"reversed_twos", twos, reversed(all_of(18))},
        {"reversed_interleaved", fives, reversed(every_second(8, 1))},
        {"crossed", {600, 600}, {1, 0}},
        {"in_memory_same", big_twos, all_of(24)},
        {"in_memory_trailing", big_twos, {12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23}},
        {"in_memory_leading", big_twos, all_of(12)},
        {"in_memory_interleaved", big_twos, every_second(24, 0)},
        {"in_memory_crossed", {4096, 4096}, {1, 0}},
    };
    return all;
}

struct operands {
    explicit operands(const shape& of) {
        for (const std::size_t states : of.states) {
            node& added = create_node(owner, q_category_chance, q_kind_discrete);
            added.state_count = states;
            nodes.push_back(&added);
            weights.emplace_back(states, 1.0);
        }
        for (const std::size_t i : of.kept) kept.push_back(nodes[i]);
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (std::ranges::find(kept, nodes[i]) == kept.end()) removed_weights.push_back(weights[i].data());
        plan = make_loop_plan(nodes, kept);
        weighted = make_weighted_plan(nodes, kept);
        levels = make_levels(nodes, kept);
        larger = filled(configurations(nodes));
        smaller = filled(configurations(kept));
        utility = filled(larger.size());
        smaller_utility = filled(smaller.size());
    }

    static number_array filled(std::size_t count) {
        number_array numbers(count);
        std::fill(numbers.begin(), numbers.end(), 1.0);
        return numbers;
    }

    std::size_t place_in_smaller(std::size_t entry) const {
        std::size_t place = 0;
        for (std::size_t level = levels.size(); level-- > 0;) {
            place += entry % levels[level].count * levels[level].smaller;
            entry /= levels[level].count;
        }
        return place;
    }

    domain owner;
    std::vector<node*> nodes, kept;
    loop_plan plan;
    weighted_plan weighted;
    loop_levels levels;
    std::vector<std::vector<double>> weights;
    std::vector<const double*> removed_weights;
    number_array larger, smaller, utility, smaller_utility;
};

using operation = std::function<void(operands&)>;

struct row {
    const char* name;
    operation by_plan;
    std::function<void(double& larger, double& smaller)> by_index;
    std::size_t larger_bytes;  // for each entry
    std::size_t smaller_bytes;
};

void run(benchmark::State& state, const shape& of, const row& measured, bool by_plan) {
    operands used(of);
    for (auto _ : state) {
        if (by_plan) measured.by_plan(used);
        benchmark::ClobberMemory();
    }
    const double entries = static_cast<double>(used.larger.size());
    const double bytes = entries * static_cast<double>(measured.larger_bytes) +
                         static_cast<double>(used.smaller.size() * measured.smaller_bytes);
    state.counters["entries/s"] = benchmark::Counter(entries, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes/s"] = benchmark::Counter(bytes, benchmark::Counter::kIsIterationInvariantRate);
}

template <class Entry>
void walk_by_index(benchmark::State& state, const shape& of, const Entry& entry) {
    operands used(of);
    for (auto _ : state) {
        for (std::size_t i = 0; i < used.larger.size(); ++i)
            entry(used.larger[i], used.smaller[used.place_in_smaller(i)]);
        benchmark::ClobberMemory();
    }
    state.counters["entries/s"] = benchmark::Counter(static_cast<double>(used.larger.size()),
                                                     benchmark::Counter::kIsIterationInvariantRate);
}

void streaming(benchmark::State& state) {
    operands used({"", {static_cast<std::size_t>(state.range(0))}, {}});
    for (auto _ : state) {
        scale(used.larger.data(), used.larger.size(), 1.0);
        benchmark::ClobberMemory();
    }
    const double entries = static_cast<double>(used.larger.size());
    state.counters["entries/s"] = benchmark::Counter(entries, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes/s"] =
        benchmark::Counter(16 * entries, benchmark::Counter::kIsIterationInvariantRate);
}

const std::vector<row>& rows() {
    static const std::vector<row> all{
        {"multiply", [](operands& o) { multiply(o.plan, o.larger.data(), o.smaller.data()); }, {}, 16, 8},
        {"divide", [](operands& o) { divide(o.plan, o.larger.data(), o.smaller.data()); }, {}, 16, 8},
        {"add", [](operands& o) { add(o.plan, o.larger.data(), o.smaller.data()); }, {}, 16, 8},
        {"expand", [](operands& o) { expand(o.plan, o.larger.data(), o.smaller.data()); }, {}, 8, 8},
        {"sum", [](operands& o) { sum_marginal(o.plan, o.larger.data(), o.smaller.data()); }, {}, 8, 8},
        {"max", [](operands& o) { max_marginal(o.plan, o.larger.data(), o.smaller.data()); }, {}, 8, 8},
        {"out_sum",
         [](operands& o) {
             out_sum_marginal(o.weighted, o.larger.data(), o.removed_weights, o.smaller.data());
         },
         {},
         8,
         8},
        {"out_max",
         [](operands& o) {
             out_max_marginal(o.weighted, o.larger.data(), o.removed_weights, o.smaller.data());
         },
         {},
         8,
         8},
        {"pair",
         [](operands& o) {
             pair_marginal(o.plan, o.larger.data(), o.utility.data(), o.smaller.data(),
                           o.smaller_utility.data());
         },
         {},
         24,
         16},
    };
    return all;
}

const bool registered = [] {
    for (const long size : {48L, 390625L, 1L << 24})
        benchmark::RegisterBenchmark("streaming", streaming)->Arg(size);
    for (const shape& of : shapes()) {
        for (const row& measured : rows())
            benchmark::RegisterBenchmark((std::string(measured.name) + "/" + of.name).c_str(),
                                         [&](benchmark::State& state) { run(state, of, measured, true); });
        benchmark::RegisterBenchmark(
            (std::string("multiply_by_index/") + of.name).c_str(),
            [&](benchmark::State& state) { walk_by_index(state, of, [](double& l, double& s) { l *= s; }); });
        benchmark::RegisterBenchmark(
            (std::string("sum_by_index/") + of.name).c_str(),
            [&](benchmark::State& state) { walk_by_index(state, of, [](double& l, double& s) { s += l; }); });
    }
    return true;
}();

}  // namespace
