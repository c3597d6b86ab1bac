// The operations on tables with 1 to 8 continuous nodes over 4,096 discrete configurations, each beside a plain version
// that unpacks every block into a matrix. Items are entries (weights and moments) of the larger table.
#include <cmath>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "cg_combination.h"
#include "cg_conditioning.h"
#include "cg_evidence.h"
#include "cg_marginals.h"
#include "kernels.h"
#include "node.h"

namespace {

using namespace quarn;

using matrix = std::vector<std::vector<double>>;

struct gaussian {
    std::vector<double> means;
    matrix pairs;
};

// Heads with a variance each, correlated a little.
std::unique_ptr<table> joint_table(std::span<node* const> nodes) {
    auto made = new_table(table_type::ones, nullptr, nodes);
    made->roles.assign(made->continuous_count(), cg_role::head);
    made->materialise();
    for (std::size_t start = 0; start < made->moments.size(); start += made->block_size())
        for (std::size_t i = 0; i < made->continuous_count(); ++i)
            for (std::size_t j = 0; j <= i; ++j)
                made->moments[start + cg_covariance(i, j)] = i == j ? 2 : 0.1;
    return made;
}

struct operands {
    explicit operands(std::size_t continuous) {
        for (std::size_t i = 0; i < 12; ++i) {
            nodes.push_back(&create_node(owner, q_category_chance, q_kind_discrete));
            nodes.back()->state_count = 2;
        }
        for (std::size_t i = 0; i < continuous; ++i)
            nodes.push_back(&create_node(owner, q_category_chance, q_kind_continuous));
        const std::span<node*const> all(nodes), discrete = all.first(12), rest = all.subspan(12);
        whole = joint_table(nodes);

        std::vector<node*> half(discrete.begin(), discrete.end());
        half.insert(half.end(), rest.begin(),
                    rest.begin() + static_cast<std::ptrdiff_t>((continuous + 1) / 2));
        half_continuous = joint_table(half);
        std::vector<node*> fewer(discrete.begin(), discrete.begin() + 6);
        fewer.insert(fewer.end(), rest.begin(), rest.end());
        half_discrete = joint_table(fewer);

        // The first half is tail of the second.
        conditional = copy_table(*whole);
        std::vector<std::size_t> first((continuous + 1) / 2);
        std::iota(first.begin(), first.end(), std::size_t{0});
        condition_on(*conditional, first);

        to_continuous = make_cg_plan(*whole, *half_continuous);
        to_discrete = make_cg_plan(*whole, *half_discrete);
        changed = copy_table(*whole);
    }

    void restore(const table& from) {
        std::ranges::copy(from.data, changed->data.begin());
        std::ranges::copy(from.moments, changed->moments.begin());
        changed->roles = from.roles;
    }

    std::size_t entries() const { return whole->data.size() + whole->moments.size(); }

    domain owner;
    std::vector<node*> nodes;
    std::unique_ptr<table> whole, half_continuous, half_discrete, conditional, changed;
    cg_plan to_continuous, to_discrete;
};

gaussian unpack(const table& from, std::size_t configuration) {
    const std::size_t n = from.continuous_count();
    const double* const block = from.moments.data() + configuration * from.block_size();
    gaussian result{std::vector<double>(n), matrix(n, std::vector<double>(n))};
    for (std::size_t i = 0; i < n; ++i) {
        result.means[i] = block[cg_mean(i)];
        for (std::size_t j = 0; j < n; ++j) result.pairs[i][j] = block[cg_covariance(i, j)];
    }
    return result;
}

void pack(const gaussian& from, table& into, std::size_t configuration) {
    double* const block = into.moments.data() + configuration * into.block_size();
    for (std::size_t i = 0; i < into.continuous_count(); ++i) {
        block[cg_mean(i)] = from.means[i];
        for (std::size_t j = 0; j <= i; ++j) block[cg_covariance(i, j)] = from.pairs[i][j];
    }
}

void plain_strong_marginal(operands& o) {
    for (std::size_t c = 0; c < o.whole->size; ++c) {
        o.half_continuous->data[c] = o.whole->data[c];
        pack(unpack(*o.whole, c), *o.half_continuous, c);
    }
}

void plain_weak_marginal(operands& o) {
    const std::size_t n = o.whole->continuous_count(), each = o.whole->size / o.half_discrete->size;
    for (std::size_t c = 0; c < o.half_discrete->size; ++c) {
        gaussian mixed{std::vector<double>(n), matrix(n, std::vector<double>(n))};
        double weight = 0;
        for (std::size_t k = 0; k < each; ++k) {
            weight += o.whole->data[c * each + k];
            const gaussian one = unpack(*o.whole, c * each + k);
            for (std::size_t i = 0; i < n; ++i) {
                mixed.means[i] += o.whole->data[c * each + k] * one.means[i];
                for (std::size_t j = 0; j < n; ++j)
                    mixed.pairs[i][j] +=
                        o.whole->data[c * each + k] * (one.pairs[i][j] + one.means[i] * one.means[j]);
            }
        }
        o.half_discrete->data[c] = weight;
        for (std::size_t i = 0; i < n; ++i) mixed.means[i] /= weight;
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j)
                mixed.pairs[i][j] = mixed.pairs[i][j] / weight - mixed.means[i] * mixed.means[j];
        pack(mixed, *o.half_discrete, c);
    }
}

// The second half of the nodes given the first, times a distribution of the first.
void plain_combination(operands& o) {
    const std::size_t n = o.whole->continuous_count(), first = (n + 1) / 2;
    for (std::size_t c = 0; c < o.whole->size; ++c) {
        gaussian joint = unpack(*o.conditional, c);
        const gaussian by = unpack(*o.half_continuous, c);
        const matrix coefficients = joint.pairs;
        for (std::size_t i = 0; i < first; ++i) {
            joint.means[i] = by.means[i];
            for (std::size_t j = 0; j < first; ++j) joint.pairs[i][j] = by.pairs[i][j];
        }
        for (std::size_t h = first; h < n; ++h) {
            for (std::size_t k = 0; k < first; ++k) {
                joint.means[h] += coefficients[h][k] * by.means[k];
                double covariance = 0;
                for (std::size_t i = 0; i < first; ++i) covariance += coefficients[h][i] * by.pairs[i][k];
                joint.pairs[h][k] = joint.pairs[k][h] = covariance;
            }
            for (std::size_t g = first; g < n; ++g)
                for (std::size_t k = 0; k < first; ++k)
                    for (std::size_t i = 0; i < first; ++i)
                        joint.pairs[h][g] += coefficients[h][k] * by.pairs[k][i] * coefficients[g][i];
        }
        pack(joint, *o.changed, c);
    }
}

// All other nodes given node 0, whose value is 1 in the case of evidence.
void plain_conditioning(operands& o, bool with_evidence) {
    const std::size_t n = o.whole->continuous_count();
    for (std::size_t c = 0; c < o.whole->size; ++c) {
        gaussian given = unpack(*o.whole, c);
        const gaussian joint = given;
        const double variance = joint.pairs[0][0];
        if (with_evidence) {
            const double difference = 1 - joint.means[0];
            o.changed->data[c] = o.whole->data[c] * std::exp(-difference * difference / (2 * variance)) /
                                 std::sqrt(2 * 3.141592653589793 * variance);
        }
        for (std::size_t i = 1; i < n; ++i) {
            const double coefficient = joint.pairs[i][0] / variance;
            given.means[i] += coefficient * ((with_evidence ? 1 : 0) - joint.means[0]);
            for (std::size_t j = 1; j < n; ++j) given.pairs[i][j] -= coefficient * joint.pairs[0][j];
            given.pairs[i][0] = with_evidence ? 0 : coefficient;
        }
        given.means[0] = given.pairs[0][0] = 0;
        pack(given, *o.changed, c);
    }
}

constexpr std::size_t node_0 = 0;

struct row {
    const char* name;
    std::function<void(operands&)> measured, plain;
};

// The operations that change a table work on a fresh copy each time; copying is measured as well.
const std::vector<row>& rows() {
    static const std::vector<row> all{
        {"strong_marginal",
         [](operands& o) { strong_marginal(o.to_continuous, *o.whole, *o.half_continuous); },
         plain_strong_marginal},
        {"weak_marginal", [](operands& o) { weak_marginal(o.to_discrete, *o.whole, *o.half_discrete); },
         plain_weak_marginal},
        {"combination",
         [](operands& o) {
             o.restore(*o.conditional);
             cg_combine(o.to_continuous, *o.changed, *o.half_continuous);
         },
         plain_combination},
        {"conditioning",
         [](operands& o) {
             o.restore(*o.whole);
             condition_on(*o.changed, {&node_0, 1});
         },
         [](operands& o) { plain_conditioning(o, false); }},
        {"evidence",
         [](operands& o) {
             o.restore(*o.whole);
             insert_head_evidence(*o.changed, node_0, 1);
         },
         [](operands& o) { plain_conditioning(o, true); }},
    };
    return all;
}

void run(benchmark::State& state, const std::function<void(operands&)>& measured) {
    operands used(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        measured(used);
        benchmark::ClobberMemory();
    }
    const auto entries = static_cast<double>(used.entries());
    state.counters["entries/s"] = benchmark::Counter(entries, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes/s"] =
        benchmark::Counter(8 * entries, benchmark::Counter::kIsIterationInvariantRate);
}

void copying(operands& o) { o.restore(*o.whole); }

const bool registered = [] {
    const auto add = [](const std::string& name, const std::function<void(operands&)>& measured) {
        benchmark::RegisterBenchmark(name.c_str(), [&](benchmark::State& state) { run(state, measured); })
            ->ArgName("continuous")
            ->RangeMultiplier(2)
            ->Range(1, 8);
    };
    static const std::function<void(operands&)> copied = copying;
    add("copying", copied);
    for (const row& each : rows()) {
        add(each.name, each.measured);
        add(std::string(each.name) + "_plain", each.plain);
    }
    return true;
}();

}  // namespace
