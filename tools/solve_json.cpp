#include "json_text.h"
#include "solve.h"

namespace tool {
namespace {

using nlohmann::ordered_json;

ordered_json as_json(const policy& shown) {
    ordered_json parents = ordered_json::array();
    for (const node_beliefs& parent : shown.parents)
        parents.push_back({{"node", parent.node}, {"states", parent.states}});
    ordered_json rows = ordered_json::array();
    ordered_json possible = ordered_json::array();
    for (const policy_row& row : shown.rows) {
        rows.push_back(row.weights);
        possible.push_back(row.is_possible);
    }
    return {
        {"states", shown.decision.states}, {"parents", parents}, {"policy", rows}, {"possible", possible}};
}

}  // namespace

std::string solution_as_json(const solution& shown) {
    ordered_json document = evidence_as_json(shown.results);
    document["start"] = shown.start;
    if (shown.removed_links) {
        document["removed_links"] = ordered_json::array();
        for (const link_names& link : *shown.removed_links)
            document["removed_links"].push_back({{"parent", link.parent}, {"child", link.child}});
    }
    ordered_json::object_t policies;
    for (const policy& found : shown.policies)
        if (!found.rows.empty()) policies.push_back({found.decision.node, as_json(found)});
    document["policies"] = policies;
    document["utilities"] = utilities_as_json(shown.results);
    document["expected_utility_before"] = shown.utility_before;
    document["expected_utility"] = *shown.results.expected_utility;
    return json_text(document);
}

}  // namespace tool
