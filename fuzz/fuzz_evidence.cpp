// Bytes as operations on a random network: the first two choose it, the others evidence, propagations, tables, links and
// compression. After each propagation all results are compared with enumeration. The seeds in the corpus are one network of
// five nodes, with zeros, and one of six for each kind, and 160 random bytes.

#include <cstdint>
#include <iterator>

#include "model.h"

namespace {

struct bytes {
    const std::uint8_t* left;
    const std::uint8_t* end;

    bool more() const { return left != end; }
    unsigned below(std::size_t count) { return more() ? unsigned(*left++ % count) : 0; }
};

request asked_of(model& tested, bytes& in) {
    const bool all = tested.of.roles == std::vector{role::chance};
    request made;
    if (in.below(3) == 1 && all) made.equilibrium = q_equilibrium_max;
    if (in.below(3) == 1 && all) made.mode = q_mode_fast_retraction;
    const unsigned from = in.below(3);
    made.from_cliques = from == 1;
    for (q_junction_tree_t tree : tested.trees()) {
        const auto cliques = listed(q_junction_tree_get_cliques(tree));
        if (from > 0) made.cliques.push_back(cliques[in.below(cliques.size())]);
    }
    return made;
}

void change_evidence(model& tested, bytes& in) {
    constexpr double weights[] = {0, 1, 0.5, 2, 1e-6, 1e6, 0.3, 1e-3};
    const std::size_t node = in.below(tested.nodes.size()), what = in.below(8);
    const variable& v = tested.reference[node];
    if (v.is == role::utility) return;
    if (what == 0) return tested.retract(node);
    if (v.is == role::continuous) return tested.enter_value(node, (int(in.below(256)) - 128) / 16.0);
    const std::size_t state = in.below(v.states);
    what < 4 ? tested.select(node, state) : tested.weigh(node, state, weights[in.below(std::size(weights))]);
}

void step(model& tested, bytes& in) {
    const unsigned what = in.below(64);
    tested.random.seed(what);  // for what is still drawn
    if (what < 32) return change_evidence(tested, in);
    if (what < 56) return tested.propagate(asked_of(tested, in));
    if (what < 58) return tested.start_again();
    if (what < 60) return tested.change_table();
    if (what < 62) return tested.change_structure();
    if (tested.of.compresses) tested.compress();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    GTEST_FLAG_SET(break_on_failure, true);
    bytes in{data, data + size};
    const kind& of = kinds[in.below(std::size(kinds))];
    const unsigned seed = 1 + in.below(256);
    std::mt19937 random(seed);
    model tested(seed, of, oracle::random_network(random, {1 + seed % 6, 3, 3, seed % 2 == 0, of.roles}));
    for (int steps = 0; in.more() && steps < 48; ++steps) step(tested, in);
    return 0;
}
