// Text of SVG and HTML documents.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tool {

// The text as it may stand in elements and attributes of XML, HTML and labels for Graphviz; what cannot be shown is \xNN, as
// on a terminal.
std::string markup(std::string_view text);

// At most two decimals.
std::string coordinate(double value);

using attributes = std::initializer_list<std::pair<const char*, std::string>>;

// <NAME ATTRIBUTE="VALUE" ...>CONTENT</NAME>, where the content is markup and values are text; empty ones are left out.
std::string element(const char* name, attributes given, std::string_view content = {});

}  // namespace tool
