// quarn convert IN.net OUT.net
#pragma once

#include <string>

#include <CLI/App.hpp>

namespace tool {

struct convert_options {
    std::string model;
    std::string output;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_convert_command(CLI::App& commands, convert_options& options);

// What the command prints: the network where it goes to standard output.
std::string run_convert(const convert_options& options);

}  // namespace tool
