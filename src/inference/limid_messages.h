// Messages in the tree of a decision problem: probabilities and utilities, of all that is known in one part of the tree,
// over a separator. Unlike those of a propagation they are kept for either direction, so that a policy can be taken out and
// another one put in [Lauritzen & Nilsson 2001].
#pragma once

#include <vector>

#include "scaling.h"

namespace quarn {

// A decision that is being optimised, with its policy.
struct open_decision {
    node* decision;
    clique* home;
    assigned_table* policy;
};

// The tables of a clique: probabilities, and the mean of the utilities.
struct clique_tables {
    std::span<double> probabilities;
    std::span<double> utilities;
};

class limid_messages {
public:
    // The cliques hold the tables of the nodes and the evidence, but no policy of the decisions.
    limid_messages(const tree_context& in, std::span<const open_decision> decisions);

    // The clique of a decision with all that is known elsewhere, and all policies but that of the decision. They stay
    // until the next call. Fails with q_error_inconsistency_or_underflow.
    clique_tables collect(const open_decision& asked);
    // The policy of a decision has changed.
    void invalidate(const open_decision& changed);

private:
    struct message {
        number_array probabilities;
        number_array utilities;
        bool is_valid = false;
    };
    struct step {
        clique* from;
        clique* to;
    };

    message& sent(const step& along) noexcept;
    static separator& link_of(const step& along) noexcept;
    clique_tables combine(clique& target, const clique* except_from, const node* except_policy);
    void send(const step& along);

    tree_context in_;
    std::span<const open_decision> decisions_;
    std::vector<message> up_;  // by number of the clique that is further from the root
    std::vector<message> down_;
    number_array work_;
};

}  // namespace quarn
