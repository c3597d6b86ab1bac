// quarn info MODEL.net [--json]
#pragma once

#include <string>

#include <CLI/App.hpp>

namespace tool {

struct info_options {
    std::string model;
    bool json = false;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_info_command(CLI::App& commands, info_options& options);

// What the command prints.
std::string run_info(const info_options& options);

}  // namespace tool
