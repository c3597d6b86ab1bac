#include <algorithm>
#include <array>
#include <charconv>

#include "beliefs.h"
#include "terminal.h"

namespace tool {
namespace {

// Six significant digits, in any locale.
std::string format_number(double value) {
    std::array<char, 32> text{};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value + 0.0, std::chars_format::general, 6);
    return {text.data(), result.ptr};
}

// Columns that UTF-8 text takes, roughly: its characters, not its bytes.
size_t width_of(const std::string& text) {
    return static_cast<size_t>(
        std::ranges::count_if(text, [](unsigned char c) { return (c & 0xC0U) != 0x80U; }));
}

std::string padded(std::string text, size_t width) {
    const size_t present = width_of(text);
    if (present < width) text.append(width - present, ' ');
    return text;
}

// A state that goes by its index is shown with its label all the same.
std::string title(const node_beliefs& node, size_t state) {
    const std::string& name = node.states[state];
    const std::string& label = node.labels[state];
    return visible(label.empty() || label == name ? name : name + " " + label);
}

size_t widest_title(const model_beliefs& shown) {
    size_t widest = 0;
    for (const node_beliefs& node : shown.nodes)
        for (size_t state = 0; state < node.states.size(); ++state)
            widest = std::max(widest, width_of(title(node, state)));
    return widest;
}

std::string heading(const node_beliefs& node) {
    std::string text = node.node;
    if (!node.label.empty() && node.label != node.node) text.append(" (").append(node.label).append(")");
    if (!node.observed.empty()) text.append("  [evidence: ").append(node.observed).append("]");
    if (!node.weights.empty()) {
        text += "  [evidence:";
        for (const double weight : node.weights) text.append(" ").append(format_number(weight));
        text += "]";
    }
    return visible_line(text);
}

std::string belief_line(const node_beliefs& node, size_t state, size_t width) {
    return visible_line(std::string("  ") + padded(title(node, state), width) +
                        format_number(node.beliefs[state]));
}

}  // namespace

std::string beliefs_as_text(const model_beliefs& shown) {
    const size_t width = widest_title(shown) + 2;
    std::string text;
    for (const node_beliefs& node : shown.nodes) {
        text += heading(node);
        for (size_t state = 0; state < node.states.size(); ++state) text += belief_line(node, state, width);
        text += "\n";
    }
    text.append("P(evidence)      ").append(format_number(shown.p)).append("\n");
    text.append("log P(evidence)  ").append(format_number(shown.log_p)).append("\n");
    return text;
}

}  // namespace tool
