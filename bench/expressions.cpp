// Evaluation of expressions: a typical one, of fifteen operators, and long sums, which lean to the left.
#include <string>

#include <benchmark/benchmark.h>
#include <quarn.h>

#include "evaluation.h"

namespace {

using namespace quarn;

// Nodes with constant values, so that the evaluation itself is seen.
struct constant_values final : node_values {
    value value_of(const node& referred) const override {
        if (referred.is_continuous()) return 2.5;
        return referred.subtype == q_subtype_boolean ? value(true) : value("high");
    }
    std::size_t state_of(const node&) const override { return 1; }
    double variance_of(const node&) const override { return 1; }
    double quantile_of(const node&, double level) const override { return level; }
    double probability_of(const expression&) const override { return 0.5; }
};

void evaluate_text(benchmark::State& state, const std::string& text) {
    q_domain_t domain = q_domain_new();
    for (const char* name : {"X", "Y", "B", "L"}) {
        const bool continuous = *name >= 'X';
        q_node_t node =
            q_domain_new_node(domain, q_category_chance, continuous ? q_kind_continuous : q_kind_discrete);
        q_node_set_name(node, name);
        if (*name != 'B') continue;
        q_node_set_number_of_states(node, 2);
        q_node_set_subtype(node, q_subtype_boolean);
    }
    q_expression_t tree = q_domain_parse_expression(domain, text.c_str(), nullptr, nullptr);
    if (tree == nullptr)
        state.SkipWithError("the expression was not read");
    else
        for (auto _ : state) benchmark::DoNotOptimize(evaluate(*tree, constant_values()));
    state.SetItemsProcessed(state.iterations());
    q_expression_delete(tree);
    q_domain_delete(domain);
}

void long_sum(benchmark::State& state) {
    std::string text = "X";
    for (std::int64_t i = 0; i < state.range(0); ++i) text += " + 2 * X";
    evaluate_text(state, text);
}

BENCHMARK_CAPTURE(evaluate_text, typical,
                  "if(and(B, L == \"high\", X > 0), 3 * X ^ 2 + exp(-Y / 2) * sqrt(abs(X - Y)), "
                  "max(X, Y, 1) - log(#L + 1))");
BENCHMARK(long_sum)->Arg(100);

}  // namespace
