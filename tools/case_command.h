// quarn case MODEL.net [--case FILE] [--evidence NODE=STATE ...] --output FILE
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct case_options {
    std::string model;
    std::vector<std::string> evidence;
    std::optional<std::string> case_file;
    std::string output;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_case_command(CLI::App& commands, case_options& options);

// What the command prints: the case where it goes to standard output.
std::string run_case(const case_options& options);

}  // namespace tool
