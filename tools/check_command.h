// quarn check MODEL.net
#pragma once

#include <string>

#include <CLI/App.hpp>

namespace tool {

struct check_options {
    std::string model;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_check_command(CLI::App& commands, check_options& options);

// What the command prints: a line for each finding.
std::string run_check(const check_options& options);

}  // namespace tool
