// How a card looks.
#pragma once

#include <string>

#include "card.h"

namespace tool {

struct card_size {
    double width;
    double height;
};

card_size size_of(const card& drawn);

// With its upper left corner at (0, 0).
std::string card_as_svg(const card& drawn);

// How big texts are.
constexpr double title_size = 13, text_size = 11, small_size = 10;

}  // namespace tool
