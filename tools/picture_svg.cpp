#include <cmath>

#include "card_svg.h"
#include "markup.h"
#include "picture.h"
#include "picture_layout.h"
#include "picture_style.h"

namespace tool {
namespace {

constexpr double page_margin = 16;

const char* name_of(link_sort sort) {
    switch (sort) {
    case link_sort::informational: return "link informational";
    case link_sort::functional: return "link functional";
    case link_sort::undirected: return "link undirected";
    default: return "link";
    }
}

std::string place(point where) { return coordinate(where.x) + " " + coordinate(where.y); }

std::string arrow(point from, point tip) {
    constexpr double half_width = 0.42;  // of its length
    const point along{tip.x - from.x, tip.y - from.y};
    const point side{-along.y * half_width, along.x * half_width};
    return element("path", {{"class", "tip"},
                            {"d", "M" + place(tip) + "L" + place({from.x + side.x, from.y + side.y}) + "L" +
                                      place({from.x - side.x, from.y - side.y}) + "Z"}});
}

std::string link_as_svg(const laid_link& laid, const std::string& tooltip, link_sort sort) {
    std::string curve;
    for (size_t i = 0; i < laid.curve.size(); ++i)
        curve += (i == 0 ? "M" : i == 1 ? "C" : " ") + place(laid.curve[i]);
    std::string text =
        element("title", {}, markup(tooltip)) + element("path", {{"class", name_of(sort)}, {"d", curve}});
    if (laid.tip && !laid.curve.empty()) text += arrow(laid.curve.back(), *laid.tip);
    return element("g", {{"class", "edge"}}, text) + "\n";
}

// For those who hear the picture.
std::string description(const picture& drawn) {
    std::string text =
        std::to_string(drawn.cards.size()) + " nodes, " + std::to_string(drawn.links.size()) + " links.";
    std::string evidence;
    for (const card& node : drawn.cards)
        if (!node.evidence.empty()) evidence += (evidence.empty() ? "" : ", ") + node.title;
    return evidence.empty() ? text : text + " Evidence on: " + evidence + ".";
}

}  // namespace

std::string picture_as_svg(const picture& drawn) {
    const picture_layout laid = lay_out(drawn);
    std::string text =
        element("title", {}, markup(drawn.title)) + element("desc", {}, markup(description(drawn))) + "\n";
    text += element("style", {}, picture_style) + "\n";
    text += element("rect", {{"class", "page"}, {"width", "100%"}, {"height", "100%"}, {"rx", "6"}}) + "\n";
    std::string parts;
    for (size_t i = 0; i < drawn.links.size(); ++i) {
        const auto [from, to, sort] = drawn.links[i];
        const char* const between = sort == link_sort::undirected ? " \u2013 " : " \u2192 ";
        parts += link_as_svg(laid.links[i], drawn.names[from] + between + drawn.names[to], sort);
    }
    for (size_t i = 0; i < drawn.cards.size(); ++i) {
        const auto [width, height] = size_of(drawn.cards[i]);
        const std::string corner =
            coordinate(laid.cards[i].x - width / 2) + " " + coordinate(laid.cards[i].y - height / 2);
        parts +=
            element("g", {{"transform", "translate(" + corner + ")"}}, card_as_svg(drawn.cards[i])) + "\n";
    }
    const std::string margin = coordinate(page_margin);
    text += element("g", {{"transform", "translate(" + margin + " " + margin + ")"}}, "\n" + parts);
    const std::string width = coordinate(std::ceil(laid.width + 2 * page_margin));
    // In pages that make it fit, texts stay legible.
    const std::string least_width = coordinate(std::ceil(0.55 * laid.width));
    const std::string height = coordinate(std::ceil(laid.height + 2 * page_margin));
    return element("svg",
                   {{"xmlns", "http://www.w3.org/2000/svg"},
                    {"class", "quarn"},
                    {"role", "img"},
                    {"aria-label", drawn.title},
                    {"width", width},
                    {"height", height},
                    {"viewBox", "0 0 " + width + " " + height},
                    {"style", "min-width:" + least_width + "px"}},
                   "\n" + text + "\n") +
           "\n";
}

}  // namespace tool
