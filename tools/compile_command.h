// quarn compile MODEL.net [--method NAME] [--log FILE] [--json]
#pragma once

#include <optional>
#include <string>

#include <CLI/App.hpp>

namespace tool {

struct compile_options {
    std::string model;
    std::string method = "best-greedy";
    std::optional<std::string> log;  // name of a file
    bool json = false;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_compile_command(CLI::App& commands, compile_options& options);

// What the command prints. When the tables cannot be made it prints the rest itself, then fails.
std::string run_compile(const compile_options& options);

}  // namespace tool
