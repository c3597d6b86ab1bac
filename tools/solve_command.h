// quarn solve MODEL.net [--evidence NODE=STATE ...] [--start uniform|file] [--minimize] [--json]
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct solve_options {
    std::string model;
    std::vector<std::string> evidence;
    std::optional<std::string> case_file;
    std::string start = "uniform";
    bool minimize = false;
    bool json = false;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_solve_command(CLI::App& commands, solve_options& options);

// What the command prints.
std::string run_solve(const solve_options& options);

}  // namespace tool
