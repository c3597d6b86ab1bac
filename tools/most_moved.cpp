#include <algorithm>
#include <cmath>

#include "beliefs.h"
#include "tool_failure.h"

namespace tool {
namespace {

bool can_move(const node_beliefs& node, q_mode_t mode) {
    const bool has_beliefs = !node.states.empty() || node.category == q_category_chance;
    return has_beliefs && node.failure.empty() &&
           (mode == q_mode_fast_retraction || !node.entered.is_observed());
}

// Nothing where the node cannot be computed now.
std::optional<double> distance_from_now(q_node_t before, const node_beliefs& after) {
    if (after.states.empty()) {
        const double deviation = std::sqrt(q_node_get_variance(before));
        if (q_error_code() != q_error_none) return {};
        const double change = std::abs(after.moments->mean - q_node_get_mean(before));
        return deviation > 0 ? change / deviation : 0;
    }
    double sum = 0;
    for (size_t state = 0; state < after.beliefs.size(); ++state)
        sum += std::abs(after.beliefs[state] - q_node_get_belief(before, state));
    if (q_error_code() != q_error_none) return {};
    return sum / 2;
}

}  // namespace

void keep_most_moved(model& asked, model_beliefs& result, size_t count) {
    std::erase_if(result.nodes, [&](const node_beliefs& node) { return !can_move(node, result.mode); });
    if (q_domain_retract_findings(asked.domain()) != q_error_none) fail_with_library_error(asked.file());
    asked.compute_what_can_be();
    for (node_beliefs& node : result.nodes) {
        constexpr double rounding = 1e-12;
        node.moved = distance_from_now(asked.node_called(node.node), node);
        if (node.moved && !(*node.moved > rounding)) node.moved = 0;
    }
    std::erase_if(result.nodes, [](const node_beliefs& node) { return !node.moved; });
    std::ranges::stable_sort(result.nodes, std::greater(),
                             [](const node_beliefs& node) { return *node.moved; });
    result.nodes.erase(result.nodes.begin() + static_cast<ptrdiff_t>(std::min(count, result.nodes.size())),
                       result.nodes.end());
}

}  // namespace tool
