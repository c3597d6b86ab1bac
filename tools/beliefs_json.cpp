#include <nlohmann/json.hpp>

#include "beliefs.h"

namespace tool {

using nlohmann::ordered_json;

std::string beliefs_as_json(const model_beliefs& shown) {
    ordered_json evidence = ordered_json::object();
    ordered_json beliefs = ordered_json::object();
    for (const node_beliefs& node : shown.nodes) {
        if (!node.observed.empty()) evidence[node.node] = node.observed;
        if (!node.weights.empty()) evidence[node.node] = node.weights;
        beliefs[node.node] = {{"states", node.states}, {"beliefs", node.beliefs}};
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
