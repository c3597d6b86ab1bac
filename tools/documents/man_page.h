// Manual pages, in roff.
#pragma once

#include <string>

#include <CLI/App.hpp>

namespace tool {

// Of the tool.
std::string man_page(const CLI::App& commands);

// Of one of its commands. Its explanations are cut at their headings, lines that end with a colon; under these, and within
// paragraphs, text is filled, but for examples. "  WORD  text" is an entry of a list.
std::string man_page(const CLI::App& commands, const CLI::App& command);

}  // namespace tool
