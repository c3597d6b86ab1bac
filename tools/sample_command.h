// quarn sample MODEL.net [--count N] [--seed S] [--evidence NODE=STATE ...] [--nodes NODE,...] [--output FILE.csv]
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct sample_options {
    std::string model;
    std::vector<std::string> evidence;
    std::optional<std::string> case_file;
    size_t count = 1;
    std::optional<uint32_t> seed;    // none: that of a new domain
    std::vector<std::string> nodes;  // empty: all
    std::string output = "-";
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_sample_command(CLI::App& commands, sample_options& options);

// Writes the cases.
void run_sample(const sample_options& options);

}  // namespace tool
