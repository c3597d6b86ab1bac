#include "report.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

#include "picture.h"
#include "tool_failure.h"

namespace tool {
namespace {

using findings = std::vector<std::pair<q_node_t, std::vector<double>>>;

// Networks with decisions are discrete.
findings take_findings(const model& asked) {
    findings taken;
    for (const q_node_t node : asked.nodes()) {
        if (q_node_get_kind(node) != q_kind_discrete || q_node_evidence_is_entered(node) != 1) continue;
        taken.emplace_back(node, std::vector<double>());
        for (size_t state = 0; state < q_node_get_number_of_states(node); ++state)
            taken.back().second.push_back(q_node_get_entered_finding(node, state));
    }
    return taken;
}

void enter(const model& asked, const findings& entered) {
    for (const auto& [node, weights] : entered)
        for (size_t state = 0; state < weights.size(); ++state)
            if (q_node_enter_finding(node, state, weights[state]) != q_error_none)
                fail_with_library_error(asked.file());
}

// Puts what moved most first, and finds what everything was before. Leaves no evidence.
void compare_with_no_evidence(model& asked, network_report& made) {
    model_beliefs moved = made.made.results;
    keep_most_moved(asked, moved, std::numeric_limits<size_t>::max());
    std::unordered_map<std::string, double> distances;
    for (const node_beliefs& node : moved.nodes) distances[node.node] = *node.moved;
    std::vector<node_beliefs>& nodes = made.made.results.nodes;
    for (node_beliefs& node : nodes)
        if (const auto found = distances.find(node.node); found != distances.end())
            node.moved = found->second;
    std::ranges::stable_sort(nodes, std::greater(),
                             [](const node_beliefs& node) { return node.moved.value_or(-1); });
    std::vector<q_node_t> order;
    order.reserve(nodes.size());
    for (const node_beliefs& node : nodes) order.push_back(asked.node_called(node.node));
    made.before = compute_beliefs(asked, order, q_mode_normal).nodes;
}

void draw(const model& asked, network_report& made) {
    const card_content content = made.made.problem.empty() ? card_content::all : card_content::no_results;
    const picture drawn = make_picture(asked, made.made.results, content);
    made.title = drawn.title;
    made.links = drawn.links.size();
    try {
        made.picture = picture_as_svg(drawn);
    } catch (const command_failure& failed) {
        made.missing_picture = failed.what();
    }
}

}  // namespace

network_report make_report(model& asked, bool with_better_policies) {
    network_report made{"", asked.file(), 0, "", "", {}};
    if (with_better_policies) {
        set_uniform_policies(asked);
        made.utility_before = solve(asked).utility_before;
    }
    made.made = try_to_compute(asked, asked.nodes());
    draw(asked, made);
    if (!made.made.problem.empty()) return made;
    made.statistics = measure_trees(asked);
    for (const q_node_t member : made.statistics->largest_clique)
        made.largest_clique.emplace_back(q_node_get_name(member));
    made.policies = read_policies(asked);
    const findings entered = take_findings(asked);
    if (!made.made.results.evidence.empty()) compare_with_no_evidence(asked, made);
    if (with_better_policies) {
        enter(asked, entered);
        mark_impossible_rows(asked, made.policies);
    }
    return made;
}

}  // namespace tool
