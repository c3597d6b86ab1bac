#include "attempt.h"

#include <limits>

#include "tool_failure.h"

namespace tool {

model_beliefs describe_all(const model& asked, const std::vector<q_node_t>& shown) {
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    model_beliefs described{asked.file(), {}, q_error_none, {unknown, unknown}, q_mode_normal, {}, 0, {}, {}};
    for (const q_node_t node : asked.nodes())
        if (node_evidence entered = describe(node).entered; entered.is_observed() || !entered.weights.empty())
            described.evidence.push_back(std::move(entered));
    for (const q_node_t node : shown) described.nodes.push_back(describe(node));
    return described;
}

attempt try_to_compute(model& asked, const std::vector<q_node_t>& shown) {
    attempt made{describe_all(asked, shown)};
    try {
        made.results = compute_beliefs(asked, shown, q_mode_normal);
        return made;
    } catch (const command_failure& failed) {
        made.problem = failed.what();
    }
    if (made.results.evidence.empty()) return made;
    q_domain_retract_findings(asked.domain());
    try {
        asked.compute_what_can_be();
    } catch (const command_failure&) {
        return made;
    }
    throw command_failure(made.problem);
}

}  // namespace tool
