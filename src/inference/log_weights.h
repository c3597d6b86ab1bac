// The weights of a tree as logarithms, for factors as far apart as densities are: what is nothing in one clique may be
// nearly all there is once another clique has had its say.
#pragma once

#include "scaling.h"

namespace quarn {

class log_weights {
public:
    explicit log_weights(const tree_context& in) noexcept : in_(in) {}

    // Takes logarithms of the weights of all cliques and separators.
    void take() noexcept;

    // Makes every weight that of the most probable configuration of all with it, so that what has become impossible in one
    // clique is impossible in the others.
    void calibrate();

    // Does that, and takes exponentials again, the largest being 1: what vanishes is negligible. Every clique has something
    // new to tell then. Fails with q_error_inconsistency_or_underflow when nothing is possible.
    void restore();

private:
    void send(separator& link, const table_map& in_sender, clique& from, const table_map& in_receiver,
              clique& to);

    tree_context in_;
};

}  // namespace quarn
