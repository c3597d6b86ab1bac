#include "card.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <numeric>

#include "terminal.h"
#include "text_columns.h"

namespace tool {
namespace {

constexpr size_t most_rows = 10;
constexpr size_t rows_of_many = 8;  // the largest ones, where there are more than that

card_sort sort_of(const node_beliefs& node) {
    switch (node.category) {
    case q_category_decision: return card_sort::decision;
    case q_category_utility: return card_sort::utility;
    case q_category_function: return card_sort::function;
    default: return node.states.empty() ? card_sort::continuous : card_sort::chance;
    }
}

std::string sort_of_evidence(const node_evidence& entered) {
    if (!entered.weights.empty()) return "likelihood";
    return entered.is_observed() ? "observed" : "";
}

card_row make_row(const node_beliefs& node, size_t state, const model_beliefs& results) {
    card_row row{title(node, state)};
    row.is_observed = node.states[state] == node.entered.state;
    row.details = row.label;
    if (!node.beliefs.empty()) {
        row.belief = node.beliefs[state];
        row.value = format_percent(*row.belief);
        row.details += ": " + format_number(*row.belief);
    }
    if (!node.entered.weights.empty()) {
        row.beside = "\u00D7" + format_number(node.entered.weights[state]);
        row.details += ", weight " + format_number(node.entered.weights[state]);
    }
    if (!node.expected_utilities.empty() && !std::isnan(node.expected_utilities[state])) {
        const std::string expected = format_utility(node.expected_utilities[state], results);
        if (node.category == q_category_decision && row.beside.empty()) row.beside = expected;
        row.details += ", expected utility " + expected;
    }
    return row;
}

// In the order of the node; of many the most probable ones, and one row for all others.
std::vector<card_row> make_rows(const node_beliefs& node, const model_beliefs& results) {
    std::vector<size_t> states(node.states.size());
    std::iota(states.begin(), states.end(), size_t{0});
    if (states.size() > most_rows) {
        if (!node.beliefs.empty())
            std::ranges::stable_sort(states, std::greater(),
                                     [&](size_t state) { return node.beliefs[state]; });
        states.resize(rows_of_many);
        std::ranges::sort(states);
    }
    std::vector<card_row> rows;
    double left = 1;
    for (const size_t state : states) {
        rows.push_back(make_row(node, state, results));
        left -= rows.back().belief.value_or(0);
    }
    if (const size_t more = node.states.size() - states.size(); more > 0) {
        card_row others{"\u2026 " + std::to_string(more) + " more"};
        if (!node.beliefs.empty()) others.value = format_percent(std::abs(left) < 1e-12 ? 0 : left);
        others.details = others.label;
        rows.push_back(others);
    }
    return rows;
}

// Few digits say enough, but those of large numbers.
std::string format_briefly(double value) {
    constexpr double large = 1000;
    constexpr int digits = 4;
    if (!(std::abs(value) < large)) return format_number(value);
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value + 0.0, std::chars_format::general, digits)
            .ptr;
    return {text.data(), end};
}

void add_number(card& made, const node_beliefs& node, const model_beliefs& results) {
    if (node.moments) {
        const auto [mean, variance] = *node.moments;
        made.is_certain = variance == 0;
        made.number = format_briefly(mean);
        made.caption = "value";
        if (made.is_certain) return;
        made.number += " \u00B1 " + format_briefly(std::sqrt(variance));
        made.caption = "mean \u00B1 standard deviation";
    } else if (node.value) {
        made.number = format_number(*node.value);
        made.caption = "value";
    } else if (!node.expected_utilities.empty()) {
        made.number = format_utility(node.expected_utilities.front(), results);
        made.caption = "expected utility";
    } else if (node.entered.value) {
        made.number = format_number(*node.entered.value);
        made.caption = "value";
    }
}

}  // namespace

card make_card(const node_beliefs& node, const model_beliefs& results, card_content content) {
    card made{sort_of(node), visible(node.label.empty() ? node.node : node.label), visible(node.node),
              sort_of_evidence(node.entered), ""};
    if (made.title == made.name) made.name.clear();
    if (content == card_content::title_only) return made;
    made.is_computed = content == card_content::all && node.failure.empty();
    if (content == card_content::all && !node.failure.empty()) {
        made.number = "not computed";
        made.caption = node.failure;
        return made;
    }
    made.rows = make_rows(node, results);
    const bool has_utilities = node.category == q_category_decision && !node.expected_utilities.empty();
    made.beside = has_utilities && node.entered.weights.empty() ? "utility" : "";
    if (made.rows.empty())
        add_number(made, node, results);
    else if (node.moments && node.moments->variance != 0)
        made.caption = "mean " + format_briefly(node.moments->mean) + ", SD " +
                       format_briefly(std::sqrt(node.moments->variance));
    return made;
}

const char* name_of(card_sort sort) {
    constexpr std::array names = {"chance", "continuous", "decision", "utility", "function"};
    return names[static_cast<size_t>(sort)];
}

std::string format_percent(double belief) {
    constexpr double least = 0.0005, most = 0.9995;
    if (belief == 0 || belief == 1) return belief == 0 ? "0%" : "100%";
    if (belief < least) return "<0.1%";
    if (belief > most) return ">99.9%";
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%.1f%%", belief * 100);
    return text.data();
}

}  // namespace tool
