// Operations between two tables, against a walk over configurations that knows nothing of loops and tiles.
#include "table_operations.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "node.h"
#include "tile_kernels.h"

using namespace quarn;

namespace {

using order = std::vector<std::size_t>;
using numbers = std::vector<double>;

// Small eighths, with which sums of products are exact in any order; or numbers with which they are not.
numbers random_numbers(std::mt19937& random, std::size_t count, bool exact, bool wild) {
    numbers made(count);
    for (double& number : made) {
        number = (static_cast<double>(random() % 11) - 2) / 8;
        if (!exact) number *= std::uniform_real_distribution(0.5, 1.0)(random);
        if (wild && random() % 16 == 0) number = std::vector{NAN, INFINITY, -INFINITY}[random() % 3];
    }
    return made;
}

// Nodes of so many states; the smaller table is over those that are kept, in that order.
struct operands {
    operands(const order& all, const order& kept, bool exact, std::mt19937 random)
        : counts(all), strides(all.size()), fixed(all.size(), not_fixed) {
        std::size_t size = 1;
        for (std::size_t i = kept.size(); i-- > 0; size *= counts[kept[i]]) strides[kept[i]] = size;
        for (const std::size_t count : counts)
            nodes.emplace_back(&create_node(owner, q_category_chance, q_kind_discrete))->state_count = count;
        for (const std::size_t k : kept) smaller_nodes.push_back(nodes[k]);
        const bool wild = random() % 2 == 0;
        smaller = random_numbers(random, size, exact, wild);
        larger = random_numbers(random, configurations(nodes), exact, wild);
        utility = random_numbers(random, larger.size(), exact, wild);
        for (std::size_t n = 0; n < nodes.size(); ++n) {
            const bool weighs = random() % 3 > 0;
            weights.push_back(weighs ? random_numbers(random, counts[n], exact, 0) : numbers(counts[n], 1));
            if (strides[n] == 0) removed_weights.push_back(weighs ? weights[n].data() : nullptr);
        }
    }
    loop_plan plan() const { return make_loop_plan(nodes, smaller_nodes, fixed); }
    domain owner;
    order counts, strides;  // strides in the smaller table, 0: not in it
    std::vector<std::ptrdiff_t> fixed;
    std::vector<node*> nodes, smaller_nodes;
    numbers larger, utility, smaller;
    std::vector<numbers> weights;
    std::vector<const double*> removed_weights;
};

std::vector<numbers> by_plan(const operands& o, const workers& allowed) {
    const loop_plan plan = o.plan();
    const weighted_plan weighted = make_weighted_plan(o.nodes, o.smaller_nodes);
    const numbers old(o.smaller.size(), 77);  // nobody may look at old contents
    std::vector<numbers> r;
    for (auto* apply : {multiply, divide, add, expand})
        apply(plan, r.emplace_back(o.larger).data(), o.smaller.data(), allowed);
    for (auto* reduce : {sum_marginal, max_marginal})
        reduce(plan, o.larger.data(), r.emplace_back(old).data(), allowed);
    for (auto* reduce : {out_sum_marginal, out_max_marginal})
        reduce(weighted, o.larger.data(), o.removed_weights, r.emplace_back(old).data(), allowed);
    r.resize(10, old);
    pair_marginal(plan, o.larger.data(), o.utility.data(), r[8].data(), r[9].data(), allowed);
    return r;
}

std::vector<numbers> by_kernels(const tile_kernel_set& k, const operands& o) {
    const loop_plan plan = o.plan();
    const tile_view tile(plan.tile);
    std::vector<numbers> r;
    for (auto* of : {&k.multiply, &k.divide_unless_zero, &k.divide_if_positive, &k.add, &k.assign})
        (*of)[plan.tile.kind](tile, &r.emplace_back(o.larger)[plan.start], o.smaller.data());
    const double *larger = &o.larger[plan.start], *second = &o.utility[plan.start], *none = nullptr;
    for (auto* of : {&k.clear, &k.first, &k.first_product, &k.first_weighted, &k.sum, &k.product_sum,
                     &k.weighted_sum, &k.maximum, &k.weighted_maximum})
        for (const double* weights : {o.utility.data(), none})
            (*of)[plan.tile.kind](tile, {larger, second, weights, 0.7}, r.emplace_back(o.smaller).data());
    for (numbers& result : r)  // which NaN comes out of two is up to the compiler
        for (double& number : result) number = std::isnan(number) ? NAN : number;
    return r;
}

std::vector<numbers> by_enumeration(const operands& o) {
    std::size_t inner = o.nodes.size() - 1;
    const auto rests = [&](std::size_t n) { return o.counts[n] == 1 || o.fixed[n] != not_fixed; };
    while (inner > 0 && o.strides[inner] == 0 && rests(inner)) --inner;
    const bool only_positive = o.smaller.size() == 1 || o.strides[inner] > 0;
    std::vector<numbers> r(10, numbers(o.smaller.size()));
    std::fill_n(r.begin(), 4, o.larger);
    order met(o.smaller.size()), met_weighted(o.smaller.size());
    for (std::size_t i = 0; i < o.larger.size(); ++i) {
        double weight = 1;
        bool walked = true;
        std::size_t at = 0, rest = i;
        for (std::size_t n = o.nodes.size(); n-- > 0; rest /= o.counts[n]) {
            const std::size_t state = rest % o.counts[n];
            at += state * o.strides[n];
            if (o.strides[n] > 0) continue;
            weight *= o.weights[n][state];
            walked = walked && (o.fixed[n] == not_fixed || std::size_t(o.fixed[n]) == state);
        }
        const double entry = o.larger[i], by = o.smaller[at], weighted = entry * weight;
        r[6][at] += weighted;
        if (met_weighted[at]++ == 0 || weighted > r[7][at]) r[7][at] = weighted;
        if (!walked) continue;
        r[0][i] *= by;
        if (by > 0 || (!only_positive && by != 0)) r[1][i] /= by;
        r[2][i] += by;
        r[3][i] = by;
        r[4][at] += entry;
        if (met[at]++ == 0 || entry > r[5][at]) r[5][at] = entry;
        r[9][at] += entry * o.utility[i];
    }
    r[8] = r[4];
    for (std::size_t at = 0; at < met.size(); ++at) r[9][at] = r[8][at] == 0 ? 0 : r[9][at] / r[8][at];
    return r;
}

TEST(table_operations, agree_with_enumeration_on_any_number_of_threads) {
    unsigned met = 0, met_weighted = 0;  // kinds of tiles: a bit for each
    for (unsigned seed = 1; seed <= 2000 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const bool few = random() % 3 != 0, exact = seed % 3 != 0;
        order counts(1 + random() % (few ? 8 : 3)), kept(counts.size());
        std::size_t size = 1;
        for (auto& count : counts) size *= count = std::min(1 + random() % (few ? 5 : 40), 20000 / size);
        std::iota(kept.begin(), kept.end(), std::size_t{0});
        std::ranges::shuffle(kept, random);
        kept.resize(random() % (kept.size() + 1));
        if (random() % 2 == 0) std::ranges::sort(kept);
        operands o(counts, kept, exact, random);
        for (std::size_t n = 0; n < counts.size(); ++n)
            if (random() % 8 == 0) o.fixed[n] = static_cast<std::ptrdiff_t>(random() % counts[n]);
        met |= 1u << static_cast<int>(o.plan().tile.kind);
        met_weighted |= 1u << static_cast<int>(make_weighted_plan(o.nodes, o.smaller_nodes).loops.tile.kind);
        const auto results = by_plan(o, {}), wanted = by_enumeration(o);
        const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
        for (std::size_t k = 0; k < wanted.size() && exact; ++k)
            EXPECT_TRUE(std::ranges::equal(wanted[k], results[k], same)) << "operation " << k;
        const auto same_bits = [](auto& a, auto& b) { return !std::memcmp(&a[0], &b[0], a.size() * 8); };
        const auto plain = by_kernels(baseline::kernel_set, o), best = by_kernels(tile_kernels(), o);
        EXPECT_TRUE(std::ranges::equal(plain, best, same_bits));
        if (seed % 24 != 0) continue;
        for (const workers& allowed : {workers{2, 1}, workers{4, 1}, workers{4, 7}})
            EXPECT_TRUE(std::ranges::equal(results, by_plan(o, allowed), same_bits)) << allowed.grain;
    }
    EXPECT_TRUE(met == 15 && met_weighted == 15);
}

}  // namespace
