// How much room text takes in a picture whose fonts are not known.
#pragma once

#include <string>

namespace tool {

// In pixels, in a font of that size; no common sans-serif font takes more, but for bold ones.
double drawn_width(const std::string& text, double size);

// The text, or as much of its beginning as fits, with an ellipsis.
std::string shortened(const std::string& text, double size, double width);

}  // namespace tool
