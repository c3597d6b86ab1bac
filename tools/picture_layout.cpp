#include "picture_layout.h"

#include <cmath>
#include <locale>
#include <sstream>

#include <nlohmann/json.hpp>

#include "card_svg.h"
#include "graphviz.h"
#include "markup.h"
#include "tool_failure.h"

namespace tool {
namespace {

using nlohmann::json;

constexpr double pixels_per_inch = 72;

// Nodes and links are called n and e and their number; of texts it is told nothing but their size.
std::string bare_graph(const picture& drawn, const std::string& direction) {
    const auto name = [](size_t i) { return "n" + std::to_string(i); };
    std::string text = "digraph {\n  graph [nodesep=0.35 ranksep=0.5 rankdir=" + direction +
                       "];\n  node [shape=box fixedsize=true label=\"\"];\n  edge [arrowsize=0.75];\n";
    for (size_t i = 0; i < drawn.cards.size(); ++i) {
        const auto [width, height] = size_of(drawn.cards[i]);
        text += "  " + name(i) + " [width=" + coordinate(width / pixels_per_inch) +
                " height=" + coordinate(height / pixels_per_inch) + "];\n";
    }
    for (size_t i = 0; i < drawn.links.size(); ++i) {
        const picture_link& link = drawn.links[i];
        text += "  " + name(link.from) + " -> " + name(link.to) + " [id=e" + std::to_string(i) +
                (link.sort == link_sort::undirected ? " dir=none" : "") + "];\n";
    }
    return text + ranks_as_dot(drawn, name) + "}\n";
}

point parse_point(const std::string& text, double height) {
    std::istringstream coordinates(text);
    coordinates.imbue(std::locale::classic());
    point found{};
    char comma = 0;
    coordinates >> found.x >> comma >> found.y;
    return {found.x, height - found.y};
}

// "e,X,Y X,Y X,Y ...": the tip, where there is one, then the curve.
laid_link parse_link(const std::string& text, double height) {
    laid_link found;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (word.starts_with("e,"))
            found.tip = parse_point(word.substr(2), height);
        else
            found.curve.push_back(parse_point(word, height));
    return found;
}

size_t number_in(const std::string& name) { return std::stoul(name.substr(1)); }

picture_layout parse_layout(const picture& drawn, const json& graph) {
    std::istringstream bounds(graph.at("bb").get<std::string>());
    bounds.imbue(std::locale::classic());
    picture_layout found{0, 0, std::vector<point>(drawn.cards.size()),
                         std::vector<laid_link>(drawn.links.size())};
    double origin = 0;
    char comma = 0;
    bounds >> origin >> comma >> origin >> comma >> found.width >> comma >> found.height;
    for (const json& node : graph.at("objects"))
        if (node.contains("pos"))
            found.cards.at(number_in(node.at("name"))) = parse_point(node.at("pos"), found.height);
    for (const json& link : graph.value("edges", json::array()))
        found.links.at(number_in(link.at("id"))) = parse_link(link.at("pos"), found.height);
    return found;
}

picture_layout lay_out(const picture& drawn, const std::string& direction) {
    const std::string answer = run_dot(bare_graph(drawn, direction));
    try {
        return parse_layout(drawn, json::parse(answer));
    } catch (const std::exception&) {
        throw command_failure("dot, which lays out pictures, gave an answer that cannot be read");
    }
}

// How far the picture is from what fits a screen.
double badness(const picture_layout& laid) { return std::abs(std::log(laid.width / laid.height / 1.5)); }

}  // namespace

picture_layout lay_out(const picture& drawn) {
    constexpr double wide = 2000, flat = 3;
    picture_layout downwards = lay_out(drawn, "TB");
    if (downwards.width < wide || downwards.width < flat * downwards.height) return downwards;
    // Large networks have few layers with many nodes, which are wider than high.
    picture_layout sideways = lay_out(drawn, "LR");
    return badness(sideways) < badness(downwards) ? sideways : downwards;
}

}  // namespace tool
