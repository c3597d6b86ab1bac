#include <algorithm>
#include <cmath>

#include "markup.h"
#include "picture.h"
#include "picture_layout.h"

namespace tool {
namespace {

struct look {
    const char* shape;
    const char* head;
    const char* bar;
};

constexpr const char* evidence_colour = "#b34700";
constexpr const char* track_colour = "#ffffff";

look look_of(card_sort sort) {
    switch (sort) {
    case card_sort::decision: return {"shape=box style=filled", "#d9f0e6", "#12805c"};
    case card_sort::utility:
        return {"shape=box margin=0.17 style=\"diagonals,filled\"", "#f5e4f2", "#8e4585"};
    case card_sort::function: return {"shape=note style=filled", "#e9edf1", "#5b6b7f"};
    case card_sort::continuous:
        return {"shape=box style=\"rounded,filled\" peripheries=2", "#e6e8fb", "#4d5bbf"};
    default: return {"shape=box style=\"rounded,filled\"", "#e1edf8", "#2f6fb3"};
    }
}

std::string quoted(const std::string& name) { return "\"" + name + "\""; }

std::string cell(attributes given, const std::string& content) { return element("TD", given, content); }

std::string small(const std::string& text) { return element("FONT", {{"POINT-SIZE", "9"}}, markup(text)); }

// A row of two cells, the filled and the empty part.
std::string bar(double belief, const std::string& colour) {
    constexpr double length = 64;
    const double filled = std::round(std::clamp(belief, 0.0, 1.0) * length);
    std::string cells;
    for (const auto& [width, background] :
         {std::pair(filled, colour), std::pair(length - filled, std::string(track_colour))})
        if (width > 0)
            cells += cell({{"BGCOLOR", background},
                           {"WIDTH", coordinate(width)},
                           {"HEIGHT", "8"},
                           {"FIXEDSIZE", "TRUE"}},
                          "");
    return element("TABLE",
                   {{"BORDER", "0"}, {"CELLBORDER", "0"}, {"CELLSPACING", "0"}, {"CELLPADDING", "0"}},
                   element("TR", {}, cells));
}

std::string row_as_label(const card_row& row, const std::string& colour) {
    const std::string label = markup(row.label);
    std::string cells = cell({{"ALIGN", "LEFT"}}, row.is_observed ? element("B", {}, label) : label);
    if (row.belief) cells += cell({}, bar(*row.belief, colour));
    if (!row.belief && !row.value.empty()) cells += cell({}, "");
    if (!row.value.empty()) cells += cell({{"ALIGN", "RIGHT"}}, markup(row.value));
    if (!row.beside.empty()) cells += cell({{"ALIGN", "RIGHT"}}, small(row.beside));
    return element("TR", {}, cells);
}

std::string whole_row(const std::string& content) {
    return element("TR", {}, cell({{"COLSPAN", "4"}, {"ALIGN", "LEFT"}}, content));
}

std::string label_of(const card& shown, const std::string& colour) {
    std::string rows = whole_row(element("B", {}, markup(shown.title)));
    if (!shown.rows.empty() || !shown.number.empty()) {
        if (!shown.name.empty()) rows += whole_row(small(shown.name));
        if (!shown.evidence.empty()) rows += whole_row(element("B", {}, small(shown.evidence)));
    }
    for (const card_row& row : shown.rows) rows += row_as_label(row, colour);
    if (!shown.number.empty()) rows += whole_row(markup(shown.number));
    if (!shown.caption.empty()) rows += whole_row(small(shown.caption));
    return element("TABLE",
                   {{"BORDER", "0"}, {"CELLBORDER", "0"}, {"CELLSPACING", "0"}, {"CELLPADDING", "2"}}, rows);
}

const char* style_of(link_sort sort) {
    switch (sort) {
    case link_sort::informational: return " [style=dashed]";
    case link_sort::functional: return " [style=dotted]";
    case link_sort::undirected: return " [dir=none penwidth=1.8]";
    default: return "";
    }
}

}  // namespace

std::string picture_as_dot(const picture& drawn) {
    constexpr const char* font = "fontname=\"Helvetica,Arial,sans-serif\"";
    std::string text = std::string("digraph {\n  graph [nodesep=0.35 ranksep=0.5 ") + font + "];\n" +
                       "  node [margin=0.06 color=\"#7c8a99\" fontsize=11 " + font + "];\n" +
                       "  edge [arrowsize=0.75 color=\"#6b7887\"];\n";
    for (size_t i = 0; i < drawn.cards.size(); ++i) {
        const card& shown = drawn.cards[i];
        const look looks = look_of(shown.sort);
        const bool is_evidence = !shown.evidence.empty();
        text += "  " + quoted(drawn.names[i]) + " [" + looks.shape + " fillcolor=\"" +
                (is_evidence ? "#fdeadd" : looks.head) + "\"" +
                (is_evidence ? std::string(" penwidth=2.6 color=\"") + evidence_colour + "\"" : "") +
                "\n    label=<" + label_of(shown, is_evidence ? "#cc5200" : looks.bar) + ">];\n";
    }
    for (const picture_link& link : drawn.links)
        text += "  " + quoted(drawn.names[link.from]) + " -> " + quoted(drawn.names[link.to]) +
                style_of(link.sort) + ";\n";
    return text + ranks_as_dot(drawn, [&](size_t i) { return quoted(drawn.names[i]); }) + "}\n";
}

}  // namespace tool
