// Where the parts of a picture are.
#pragma once

#include <optional>
#include <vector>

#include "picture.h"

namespace tool {

struct point {
    double x;
    double y;
};

struct laid_link {
    std::vector<point> curve;  // of a Bezier spline
    std::optional<point> tip;  // of an arrow that begins where the curve ends
};

// In pixels, from the upper left corner.
struct picture_layout {
    double width;
    double height;
    std::vector<point> cards;  // their middles
    std::vector<laid_link> links;
};

// Fails where Graphviz is not installed.
picture_layout lay_out(const picture& drawn);

// The lines that make cards stand side by side; `name` tells how the language of Graphviz refers to a card.
template <class Name>
std::string ranks_as_dot(const picture& drawn, const Name& name) {
    std::string text;
    for (const std::vector<size_t>& cards : drawn.abreast) {
        text += "  { rank=same;";
        for (const size_t i : cards) text += " " + name(i) + ";";
        text += " }\n";
    }
    return text;
}

}  // namespace tool
