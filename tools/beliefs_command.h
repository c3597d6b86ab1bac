// quarn beliefs MODEL.net [--evidence NODE=STATE ...] [--mode MODE | --max] [--nodes NODE,...] [--top N] [--json]
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct beliefs_options {
    std::string model;
    std::vector<std::string> evidence;
    std::optional<std::string> case_file;
    std::string mode = "normal";
    bool max = false;
    std::vector<std::string> nodes;  // empty: all
    std::optional<size_t> top;       // none: all
    bool json = false;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_beliefs_command(CLI::App& commands, beliefs_options& options);

// What the command prints.
std::string run_beliefs(const beliefs_options& options);

}  // namespace tool
