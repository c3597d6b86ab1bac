// A drawing of a network: a card for each node, and the links between them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "card.h"
#include "model.h"

namespace tool {

enum class link_sort { ordinary, informational, functional, undirected };

struct picture_link {
    size_t from;  // number of a card
    size_t to;
    link_sort sort;
};

struct picture {
    std::string title;
    std::vector<std::string> names;  // of the nodes
    std::vector<card> cards;         // one for each
    std::vector<picture_link> links;
    std::vector<std::vector<size_t>> abreast;  // cards that stand side by side
};

// The title that the network has as an attribute, else the name of its file.
std::string title_of(const model& asked);

// Of the nodes in the results, and the links between them.
picture make_picture(const model& asked, const model_beliefs& results, card_content content);

// In the language of Graphviz, with cards as labels.
std::string picture_as_dot(const picture& drawn);

// An <svg> element, laid out by Graphviz.
std::string picture_as_svg(const picture& drawn);

}  // namespace tool
