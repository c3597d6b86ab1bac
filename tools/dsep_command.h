// quarn dsep MODEL.net --source NODE[,NODE ...] [--given NODE[,NODE ...]] [--soft NODE[,NODE ...]] [--json]
#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct dsep_options {
    std::string model;
    std::vector<std::string> sources, given, soft;  // names of nodes
    bool json = false;
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_dsep_command(CLI::App& commands, dsep_options& options);

// What the command prints.
std::string run_dsep(const dsep_options& options);

}  // namespace tool
