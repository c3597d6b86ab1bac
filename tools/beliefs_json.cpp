#include <nlohmann/json.hpp>

#include "beliefs.h"

namespace tool {

using nlohmann::ordered_json;

std::string beliefs_as_json(const model_beliefs& shown) {
    // Names are distinct, so they are added without looking for them, which would take longer for each.
    ordered_json::object_t evidence;
    ordered_json::object_t beliefs;
    for (const node_beliefs& node : shown.nodes) {
        if (!node.observed.empty()) evidence.push_back({node.node, node.observed});
        if (!node.weights.empty()) evidence.push_back({node.node, node.weights});
        beliefs.push_back({node.node, {{"states", node.states}, {"beliefs", node.beliefs}}});
    }
    const ordered_json document = {{"model", shown.model},
                                   {"evidence", evidence},
                                   {"log_p", shown.log_p},
                                   {"p", shown.p},
                                   {"beliefs", beliefs}};
    // In ASCII, as labels may hold control characters; and bytes that are not UTF-8.
    return document.dump(2, ' ', true, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace tool
