#include <cmath>

#include <nlohmann/json.hpp>

#include "beliefs.h"
#include "json_text.h"

namespace tool {
namespace {

using nlohmann::ordered_json;

ordered_json as_json(const node_evidence& entered) {
    if (entered.value) return *entered.value;
    return entered.state.empty() ? ordered_json(entered.weights) : ordered_json(entered.state);
}

ordered_json failure_as_json(const node_beliefs& node) {
    ordered_json shown = ordered_json::object();
    if (!node.states.empty()) shown["states"] = node.states;
    const bool is_function = node.category == q_category_function;
    shown[!node.states.empty() ? "beliefs" : is_function ? "value" : "mean"] = nullptr;
    shown["error"] = node.failure;
    return shown;
}

ordered_json as_json(const node_beliefs& node) {
    if (!node.failure.empty()) return failure_as_json(node);
    ordered_json shown = ordered_json::object();
    if (!node.states.empty()) shown = {{"states", node.states}, {"beliefs", node.beliefs}};
    if (node.moments) {
        shown["mean"] = node.moments->mean;
        shown["variance"] = node.moments->variance;
        shown["sd"] = std::sqrt(node.moments->variance);
    }
    if (node.value) shown["value"] = *node.value;
    if (!node.expected_utilities.empty()) shown["expected_utilities"] = node.expected_utilities;
    if (node.moved) shown["moved"] = *node.moved;
    return shown;
}

}  // namespace

ordered_json evidence_as_json(const model_beliefs& shown) {
    // Names are distinct, here and below, so they are added without looking for them, which would take longer for each.
    ordered_json::object_t evidence;
    for (const node_evidence& entered : shown.evidence) evidence.push_back({entered.node, as_json(entered)});
    return {{"model", shown.model},
            {"evidence", evidence},
            {"log_p", shown.of_evidence.log_p},
            {"p", shown.of_evidence.p}};
}

ordered_json utilities_as_json(const model_beliefs& shown) {
    ordered_json::object_t utilities;
    for (const node_beliefs& node : shown.nodes)
        if (node.category == q_category_utility)
            utilities.push_back(
                {node.node, node.failure.empty() ? ordered_json(node.expected_utilities.front()) : nullptr});
    return utilities;
}

std::string beliefs_as_json(const model_beliefs& shown) {
    ordered_json::object_t beliefs;
    ordered_json::object_t configuration;
    for (const node_beliefs& node : shown.nodes)
        if (node.configured)
            configuration.push_back({node.node, node.states[*node.configured]});
        else if (node.category != q_category_utility)
            beliefs.push_back({node.node, as_json(node)});
    ordered_json document = evidence_as_json(shown);
    if (shown.of_configuration) {
        document["configuration"] = configuration;
        document["log_p_configuration"] = shown.of_configuration->log_p;
        document["p_configuration"] = shown.of_configuration->p;
    } else {
        document["beliefs"] = beliefs;
    }
    if (shown.mode == q_mode_fast_retraction) document["mode"] = "fast-retraction";
    if (shown.expected_utility) {
        document["utilities"] = utilities_as_json(shown);
        document["expected_utility"] = *shown.expected_utility;
    }
    return json_text(document);
}

}  // namespace tool
