// quarn report MODEL.net [--evidence NODE=STATE ...] [--case FILE] [--solve] --output FILE
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct report_options {
    std::string model;
    std::vector<std::string> evidence;
    std::optional<std::string> case_file;
    bool solve = false;
    std::string output;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_report_command(CLI::App& commands, report_options& options);

// Writes the page.
void run_report(const report_options& options);

}  // namespace tool
