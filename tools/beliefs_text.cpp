#include <algorithm>
#include <cmath>

#include "beliefs.h"
#include "emphasis.h"
#include "terminal.h"
#include "text_columns.h"

namespace tool {
namespace {

constexpr const char* utility_title = "expected";

size_t widest_title(const model_beliefs& shown) {
    size_t widest = 0;
    for (const node_beliefs& node : shown.nodes) {
        if (node.states.empty()) widest = std::max(widest, width_of(utility_title));
        for (size_t state = 0; state < node.states.size(); ++state)
            widest = std::max(widest, width_of(title(node, state)));
    }
    return widest;
}

std::string evidence_note(const node_evidence& entered) {
    std::string text;
    if (!entered.state.empty()) text.append(" ").append(entered.state);
    if (entered.value) text.append(" ").append(format_number(*entered.value));
    for (const double weight : entered.weights) text.append(" ").append(format_number(weight));
    return text.empty() ? text : "  [evidence:" + text + "]";
}

std::string number_line(const std::string& name, size_t width, double value) {
    return "  " + padded(name, width) + format_number(value) + "\n";
}

std::string format_utility(double utility, double largest) {
    return format_number(std::abs(utility) < 1e-15 * largest ? 0 : utility);
}

std::string belief_line(const node_beliefs& node, size_t state, size_t width, double largest) {
    constexpr size_t belief_width = 13;
    std::string text = "  " + padded(title(node, state), width);
    const std::string belief = format_number(node.beliefs[state]);
    if (node.expected_utilities.empty() || std::isnan(node.expected_utilities[state]))
        return visible_line(text + belief);
    return visible_line(text + padded(belief, belief_width) + "EU " +
                        format_utility(node.expected_utilities[state], largest));
}

std::string node_as_text(const node_beliefs& node, size_t width, double largest) {
    std::string text = heading(node);
    if (!node.failure.empty()) return text + "  N/A: " + node.failure + "\n\n";
    for (size_t state = 0; state < node.states.size(); ++state)
        text += belief_line(node, state, width, largest);
    if (node.category == q_category_utility)
        text += "  " + padded(utility_title, width) +
                format_utility(node.expected_utilities.front(), largest) + "\n";
    else if (node.value)
        text += number_line("value", width, *node.value);
    else if (node.states.empty() && node.moments)
        text += number_line("mean", width, node.moments->mean) +
                number_line("variance", width, node.moments->variance) +
                number_line("SD", width, std::sqrt(node.moments->variance));
    return text + "\n";
}

std::string configuration_line(const node_beliefs& node) {
    return in_bold(visible(node.node), stdout) +
           visible_line(" = " + title(node, *node.configured) + evidence_note(node.entered));
}

// The logarithm too.
std::string probability_lines(const std::string& name, const probability& shown, size_t width) {
    return padded("P(" + name + ")", width) + format_number(shown.p) + "\n" +
           padded("log P(" + name + ")", width) + format_number(shown.log_p) + "\n";
}

}  // namespace

std::string title(const node_beliefs& node, size_t state) {
    const std::string& name = node.states[state];
    const std::string& label = node.labels[state];
    return visible(label.empty() || label == name ? name : name + " " + label);
}

std::string heading(const node_beliefs& node) {
    std::string text;
    if (!node.label.empty() && node.label != node.node) text.append(" (").append(node.label).append(")");
    if (node.category == q_category_decision) text += "  [decision]";
    text += evidence_note(node.entered);
    if (node.moved)
        text.append("  [moved ")
            .append(format_number(*node.moved))
            .append(node.states.empty() ? " SD]" : "]");
    if (node.moments && !node.states.empty())
        text.append("  [mean ")
            .append(format_number(node.moments->mean))
            .append(", SD ")
            .append(format_number(std::sqrt(node.moments->variance)))
            .append("]");
    return in_bold(visible(node.node), stdout) + visible_line(text);
}

std::string nodes_as_text(const model_beliefs& shown) {
    const size_t width = widest_title(shown) + 2;
    std::string text;
    for (const node_beliefs& node : shown.nodes) text += node_as_text(node, width, shown.largest_utility);
    return text;
}

std::string evidence_as_text(const model_beliefs& shown, size_t width) {
    return probability_lines("evidence", shown.of_evidence, width);
}

std::string format_utility(double utility, const model_beliefs& shown) {
    return format_utility(utility, shown.largest_utility);
}

std::string beliefs_as_text(const model_beliefs& shown) {
    std::string text;
    if (shown.of_configuration) {
        for (const node_beliefs& node : shown.nodes) text += configuration_line(node);
        constexpr size_t name_width = 35;
        return text + "\n" +
               probability_lines("configuration and evidence", *shown.of_configuration, name_width) +
               probability_lines("evidence", shown.of_evidence, name_width);
    }
    constexpr size_t name_width = 18;
    text += nodes_as_text(shown) + evidence_as_text(shown, name_width);
    if (shown.expected_utility)
        text +=
            padded("expected utility", name_width) + format_utility(*shown.expected_utility, shown) + "\n";
    if (shown.mode == q_mode_fast_retraction)
        text +=
            padded("mode", name_width) + "fast retraction: beliefs given the evidence on all other nodes\n";
    return text;
}

}  // namespace tool
