#include <algorithm>
#include <cmath>

#include "card.h"
#include "markup.h"
#include "report.h"
#include "report_style.h"
#include "terminal.h"
#include "text_columns.h"

namespace tool {
namespace {

// Of a change: two decimals are enough.
std::string format_move(double moved) {
    constexpr double least = 0.005;
    return moved > 0 && moved < least ? "<0.01" : coordinate(moved);
}

std::string paragraph(const std::string& text) { return element("p", {}, markup(text)) + "\n"; }

std::string section(const char* heading, const std::string& content) {
    return element("section", {}, "\n" + element("h2", {}, heading) + "\n" + content) + "\n";
}

struct fact {
    std::string name;
    std::string value;
    const char* style = "";
    const char* value_style = "";
};

std::string facts(const std::vector<fact>& listed) {
    std::string text;
    for (const fact& shown : listed)
        text += element("div", {{"class", shown.style}},
                        element("dt", {}, markup(shown.name)) +
                            element("dd", {{"class", shown.value_style}}, markup(shown.value)));
    return element("dl", {{"class", "facts"}}, text) + "\n";
}

std::string name_of(const node_beliefs& node) { return node.label.empty() ? node.node : node.label; }

// The label, and the name where it is another one.
std::string names(const node_beliefs& node) {
    std::string text = markup(name_of(node));
    if (node.label.empty() || node.label == node.node) return text;
    return text + " " + element("span", {{"class", "name"}}, markup(node.node));
}

// A table of its own: names of columns, then rows whose first cells name them. All are markup.
struct sheet {
    std::string caption;
    std::vector<std::string> columns;
    size_t heads;  // so many columns are names, the others numbers or texts
    const char* cell_style;
    std::vector<std::vector<std::string>> rows{};
};

std::string as_html(const sheet& shown) {
    std::string head, body;
    for (size_t i = 0; i < shown.columns.size(); ++i)
        head += element("th", {{"scope", "col"}, {"class", i < shown.heads ? "" : shown.cell_style}},
                        shown.columns[i]);
    for (const std::vector<std::string>& cells : shown.rows) {
        std::string row;
        for (size_t i = 0; i < cells.size(); ++i)
            row += i < shown.heads ? element("th", {{"scope", "row"}}, cells[i])
                                   : element("td", {{"class", shown.cell_style}}, cells[i]);
        body += element("tr", {}, row) + "\n";
    }
    const std::string caption = shown.caption.empty() ? "" : element("caption", {}, shown.caption);
    return element("div", {{"class", "sheet"}},
                   element("table", {},
                           caption + element("thead", {}, element("tr", {}, head)) + "\n" +
                               element("tbody", {}, "\n" + body))) +
           "\n";
}

// --- Beliefs

// The tick is where the belief was without evidence.
std::string bar(double belief, const double* before) {
    const auto percent = [](double part) { return coordinate(std::clamp(part, 0.0, 1.0) * 100) + "%"; };
    std::string parts = element("i", {{"style", "width:" + percent(belief)}});
    if (before != nullptr) parts += element("b", {{"style", "left:" + percent(*before)}});
    return element("span", {{"class", "bar"}, {"aria-hidden", "true"}}, parts);
}

std::string belief_row(const node_beliefs& node, size_t state, const node_beliefs* before,
                       const model_beliefs& all) {
    const bool is_compared = before != nullptr && !before->beliefs.empty();
    const double* const old = is_compared ? &before->beliefs[state] : nullptr;
    const double belief = node.beliefs[state];
    const std::string full = title(node, state) + ": " + format_number(belief) +
                             (is_compared ? ", without evidence " + format_number(*old) : "");
    std::string cells = element("th", {{"scope", "row"}}, markup(title(node, state))) +
                        element("td", {}, bar(belief, old)) +
                        element("td", {{"class", "number"}}, markup(format_percent(belief)));
    if (!node.expected_utilities.empty()) {
        const double utility = node.expected_utilities[state];
        cells +=
            element("td", {{"class", "number"}}, std::isnan(utility) ? "" : format_utility(utility, all));
    }
    const bool is_seen = node.states[state] == node.entered.state;
    return element("tr", {{"class", is_seen ? "chosen" : ""}, {"title", full}}, cells) + "\n";
}

std::string belief_card(const node_beliefs& node, const node_beliefs* before, const model_beliefs& all) {
    const bool is_seen = node.entered.is_observed() || !node.entered.weights.empty();
    std::string caption = names(node);
    if (is_seen)
        caption =
            element("span", {{"class", "moved"}}, node.entered.is_observed() ? "observed" : "likelihood") +
            caption;
    else if (node.moved.value_or(0) > 0)
        caption =
            element("span", {{"class", "moved"}}, markup("moved " + format_move(*node.moved))) + caption;
    if (node.moments)
        caption += element("span", {{"class", "name"}},
                           " \u00B7 mean " + format_number(node.moments->mean) + ", SD " +
                               format_number(std::sqrt(node.moments->variance)));
    std::string head;
    for (const char* column : {"State", "Bar", "Belief"}) head += element("th", {{"scope", "col"}}, column);
    const bool has_utilities = !node.expected_utilities.empty();
    if (has_utilities) head += element("th", {{"scope", "col"}}, "Expected utility");
    std::string rows;
    for (size_t state = 0; state < node.beliefs.size(); ++state) rows += belief_row(node, state, before, all);
    const char* const sort = node.category == q_category_decision   ? " decision"
                             : node.category == q_category_function ? " function"
                                                                    : "";
    return element("div", {{"class", std::string("card") + sort + (is_seen ? " seen" : "")}},
                   element("table", {},
                           element("caption", {}, caption) +
                               element("thead", {{"class", "hidden"}}, element("tr", {}, head)) +
                               element("tbody", {}, "\n" + rows))) +
           "\n";
}

enum class group { all, moved, unmoved, observed };

group group_of(const node_beliefs& node, bool is_compared) {
    if (!is_compared) return group::all;
    if (node.entered.is_observed()) return group::observed;
    return node.moved.value_or(0) > 0 ? group::moved : group::unmoved;
}

std::string belief_cards(const network_report& shown) {
    const std::vector<node_beliefs>& nodes = shown.made.results.nodes;
    const bool is_compared = !shown.before.empty();
    std::string text;
    for (const auto& [wanted, heading] :
         {std::pair(group::all, ""), std::pair(group::moved, "Moved by the evidence"),
          std::pair(group::unmoved, "Not moved"), std::pair(group::observed, "Observed")}) {
        std::string cards;
        for (size_t i = 0; i < nodes.size(); ++i)
            if (!nodes[i].beliefs.empty() && group_of(nodes[i], is_compared) == wanted)
                cards += belief_card(nodes[i], is_compared ? &shown.before[i] : nullptr, shown.made.results);
        if (cards.empty()) continue;
        if (*heading != '\0') text += element("h3", {}, heading) + "\n";
        text += element("div", {{"class", "cards"}}, "\n" + cards) + "\n";
    }
    return text;
}

std::string belief_section(const network_report& shown) {
    const std::string cards = belief_cards(shown);
    if (cards.empty()) return "";
    const bool is_compared = !shown.before.empty();
    const bool has_utilities = shown.made.results.expected_utility.has_value();
    std::string words;
    if (is_compared)
        words += "The evidence moved most what comes first, by half the sum of the changes of its beliefs. "
                 "Ticks in bars "
                 "are the beliefs without evidence. ";
    if (has_utilities) words += "The last column is the expected utility given the state.";
    return section("Beliefs", (words.empty() ? "" : element("p", {{"class", "soft"}}, words) + "\n") + cards);
}

std::string continuous_section(const network_report& shown) {
    const bool is_compared = !shown.before.empty();
    sheet table{"", {"Node", "Mean", "Standard deviation", "Variance"}, 1, "number"};
    if (is_compared)
        for (const char* column : {"Mean without evidence", "SD without evidence", "Moved, in SDs"})
            table.columns.emplace_back(column);
    const std::vector<node_beliefs>& nodes = shown.made.results.nodes;
    for (size_t i = 0; i < nodes.size(); ++i) {
        const node_beliefs& node = nodes[i];
        if (!node.states.empty() || !node.moments) continue;
        const auto [mean, variance] = *node.moments;
        std::vector<std::string> row = {names(node), format_number(mean), format_number(std::sqrt(variance)),
                                        format_number(variance)};
        if (node.entered.value) row.front() += " " + element("span", {{"class", "name"}}, "observed");
        if (is_compared) {
            const std::optional<mean_and_variance>& before = shown.before[i].moments;
            row.push_back(before ? format_number(before->mean) : "");
            row.push_back(before ? format_number(std::sqrt(before->variance)) : "");
            row.push_back(node.moved ? markup(format_move(*node.moved)) : "");
        }
        table.rows.push_back(row);
    }
    return table.rows.empty() ? "" : section("Continuous nodes", as_html(table));
}

std::string function_section(const network_report& shown) {
    sheet table{"", {"Node", "Value"}, 1, "number"};
    for (const node_beliefs& node : shown.made.results.nodes)
        if (node.value) table.rows.push_back({names(node), format_number(*node.value)});
    return table.rows.empty() ? "" : section("Functions", as_html(table));
}

// --- Decisions

std::string policy_as_html(const policy& shown) {
    constexpr size_t most_rows = 500;
    sheet table{names(shown.decision), {}, shown.parents.size(), ""};
    for (const node_beliefs& parent : shown.parents) table.columns.push_back(names(parent));
    table.columns.emplace_back("Choice");
    for (size_t row = 0; row < std::min(shown.rows.size(), most_rows); ++row) {
        table.rows.emplace_back();
        for (const std::string& state : states_in(shown.parents, row, shown.rows.size()))
            table.rows.back().push_back(markup(state));
        table.rows.back().push_back(markup(choice(shown.decision, shown.rows[row])));
    }
    std::string text = as_html(table);
    if (shown.rows.size() > most_rows)
        text += paragraph(std::to_string(shown.rows.size() - most_rows) + " more rows are left out.");
    return text;
}

std::string decision_section(const network_report& shown) {
    const model_beliefs& results = shown.made.results;
    std::string text;
    if (results.expected_utility) {
        std::vector<fact> sums;
        if (shown.utility_before)
            sums.push_back({"Expected utility before", format_utility(*shown.utility_before, results)});
        sums.push_back({"Expected utility", format_utility(*results.expected_utility, results)});
        text += facts(sums);
        sheet table{"", {"Utility", "Expected"}, 1, "number"};
        for (const node_beliefs& node : results.nodes)
            if (node.category == q_category_utility && !node.expected_utilities.empty())
                table.rows.push_back({names(node), format_utility(node.expected_utilities.front(), results)});
        text += as_html(table);
    }
    for (const policy& found : shown.policies)
        if (!found.rows.empty()) text += policy_as_html(found);
    if (text.empty()) return "";
    const char* const which =
        shown.utility_before ? "Policies are improved from uniform ones." : "Policies are those in the file.";
    return section("Decisions and utilities", (shown.policies.empty() ? "" : paragraph(which)) + text);
}

// --- What frames these

std::string finding(const node_evidence& entered) {
    if (entered.value) return format_number(*entered.value);
    if (entered.is_observed()) return entered.state;
    std::string text;
    for (const double weight : entered.weights) text += (text.empty() ? "" : " : ") + format_number(weight);
    return text;
}

std::string evidence_section(const network_report& shown) {
    const model_beliefs& results = shown.made.results;
    std::vector<fact> listed;
    for (const node_evidence& entered : results.evidence) {
        const auto node = std::ranges::find(results.nodes, entered.node, &node_beliefs::node);
        const std::string likelihood = entered.weights.empty() ? "" : " (likelihood)";
        listed.push_back({name_of(*node) + likelihood, finding(entered), "seen"});
    }
    std::string text = listed.empty() ? paragraph("There is none.") : facts(listed);
    if (shown.made.problem.empty() && !listed.empty())
        text += facts({{"P(evidence)", format_number(results.of_evidence.p)},
                       {"log P(evidence)", format_number(results.of_evidence.log_p)}});
    return section("Evidence", text);
}

std::string legend(const network_report& shown) {
    const std::vector<node_beliefs>& nodes = shown.made.results.nodes;
    const auto has = [&](q_category_t category) {
        return std::ranges::any_of(nodes,
                                   [&](const node_beliefs& node) { return node.category == category; });
    };
    const bool has_bells = std::ranges::any_of(nodes, [](const node_beliefs& node) {
        return node.category == q_category_chance && node.states.empty();
    });
    std::string text =
        has_bells ? "Rounded: chance nodes; bell curves: continuous ones." : "Rounded: chance nodes.";
    if (has(q_category_decision)) text += " Sharp corners: decisions; dashed links: what is known then.";
    if (has(q_category_utility)) text += " Cut corners: utilities.";
    if (has(q_category_function)) text += " Lines at the sides: functions; dotted links: to and from them.";
    if (!shown.made.results.evidence.empty()) text += " Dark heads: nodes with evidence.";
    return text;
}

std::string picture_section(const network_report& shown) {
    if (shown.picture.empty())
        return section("Network", paragraph("There is no picture: " + shown.missing_picture + "."));
    const std::string scroll = element("div",
                                       {{"class", "scroll"},
                                        {"tabindex", "0"},
                                        {"role", "region"},
                                        {"aria-label", "Picture of the network"}},
                                       "\n" + shown.picture);
    return section("Network",
                   element("figure", {}, scroll + element("figcaption", {}, legend(shown))) + "\n");
}

std::string statistics_section(const network_report& shown) {
    if (!shown.statistics) return "";
    const tree_statistics& trees = *shown.statistics;
    const auto number = [](long double value) { return format_number(static_cast<double>(value)); };
    std::string members;
    for (const std::string& name : shown.largest_clique) members += (members.empty() ? "" : ", ") + name;
    return section("Junction trees",
                   facts({{"Method", "best-greedy"},
                          {"Trees", std::to_string(trees.trees)},
                          {"Cliques", std::to_string(trees.cliques)},
                          {"Total table size", number(trees.total_table_size)},
                          {"Bytes in tables", number(trees.clique_numbers * sizeof(q_number_t))},
                          {"Links filled in", std::to_string(trees.fill_in_links)},
                          {"Largest table", number(trees.largest_table_size)},
                          {"Its nodes", members, "", "list"}}));
}

std::string notes_section(const network_report& shown) {
    std::string items;
    if (!shown.made.problem.empty())
        items += element("li", {}, markup("The network cannot be computed. " + shown.made.problem + "."));
    for (const node_beliefs& node : shown.made.results.nodes)
        if (!node.failure.empty())
            items +=
                element("li", {}, names(node) + markup(" could not be computed: " + node.failure)) + "\n";
    return items.empty() ? "" : section("Notes", element("ul", {{"class", "notes"}}, "\n" + items));
}

}  // namespace

std::string report_as_html(const network_report& shown) {
    const auto count = [](size_t number, const char* what) {
        return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
    };
    const std::string source = shown.model == "-" ? "" : shown.model + " \u00B7 ";
    const std::string subtitle =
        source + count(shown.made.results.nodes.size(), "node") + ", " + count(shown.links, "link");
    const std::string main = notes_section(shown) + evidence_section(shown) + picture_section(shown) +
                             belief_section(shown) + continuous_section(shown) + function_section(shown) +
                             decision_section(shown) + statistics_section(shown);
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
           "'unsafe-inline'\">\n" +
           element("title", {}, markup(shown.title)) + "\n" + element("style", {}, report_style) +
           "\n</head>\n<body>\n" +
           element("header", {},
                   element("h1", {}, markup(shown.title)) +
                       element("p", {{"class", "soft"}}, markup(subtitle))) +
           "\n" + element("main", {}, "\n" + main) + "\n" + element("footer", {}, "Made by quarn report") +
           "\n</body>\n</html>\n";
}

}  // namespace tool
