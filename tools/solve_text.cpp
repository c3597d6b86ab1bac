#include <algorithm>

#include "solve.h"
#include "terminal.h"
#include "text_columns.h"

namespace tool {
namespace {

using line = std::vector<std::string>;  // one text for each column

std::string policy_as_text(const policy& shown) {
    std::vector<line> lines(1);
    for (const node_beliefs& parent : shown.parents) lines.front().push_back(parent.node);
    lines.front().emplace_back("choice");
    for (size_t row = 0; row < shown.rows.size(); ++row) {
        lines.push_back(states_in(shown.parents, row, shown.rows.size()));
        lines.back().push_back(choice(shown.decision, shown.rows[row]));
    }
    std::vector<size_t> widths(lines.front().size());
    for (const line& cells : lines)
        for (size_t column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths[column], width_of(cells[column]));
    widths.back() = 0;  // nothing follows
    std::string text;
    for (const line& cells : lines) {
        for (size_t column = 0; column < cells.size(); ++column)
            text += "  " + padded(cells[column], widths[column]);
        text += "\n";
    }
    return text;
}

std::string links_as_text(const std::vector<link_names>& links) {
    std::string text = "links that do not matter\n";
    for (const link_names& link : links) text += "  " + link.parent + " -> " + link.child + "\n";
    return text + (links.empty() ? "  (none)\n\n" : "\n");
}

}  // namespace

std::string choice(const node_beliefs& decision, const policy_row& row) {
    if (!row.is_possible) return "(cannot occur)";
    const auto chosen = std::ranges::count_if(row.weights, [](double weight) { return weight > 0; });
    std::string text;
    for (size_t state = 0; state < row.weights.size(); ++state) {
        if (!(row.weights[state] > 0)) continue;
        text += (text.empty() ? "" : ", ") + title(decision, state);
        if (chosen > 1) text += " " + format_number(row.weights[state]);
    }
    return text;
}

std::vector<std::string> states_in(const std::vector<node_beliefs>& parents, size_t row, size_t rows) {
    std::vector<std::string> states;
    for (const node_beliefs& parent : parents) {
        rows /= parent.states.size();
        states.push_back(title(parent, row / rows));
        row %= rows;
    }
    return states;
}

std::string solution_as_text(const solution& shown) {
    std::string text;
    if (shown.removed_links) text += links_as_text(*shown.removed_links);
    for (const policy& found : shown.policies)
        text += heading(found.decision) + (found.rows.empty() ? "" : policy_as_text(found)) + "\n";
    constexpr size_t name_width = 25;
    const auto utility_line = [&](const char* name, double utility) {
        return padded(name, name_width) + format_utility(utility, shown.results) + "\n";
    };
    return text + nodes_as_text(shown.results) + evidence_as_text(shown.results, name_width) +
           utility_line("expected utility before", shown.utility_before) +
           utility_line("expected utility", *shown.results.expected_utility);
}

}  // namespace tool
