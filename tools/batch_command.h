// quarn batch MODEL.net CASES.csv [--targets NODE,...] [--keep COLUMN,...] [--jobs N] [--output FILE.csv]
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace tool {

struct batch_options {
    std::string model;
    std::string cases;
    std::vector<std::string> targets;  // empty: all that can be computed
    std::vector<std::string> keep;
    std::optional<size_t> jobs;  // none: as many as the machine is made for
    std::string output = "-";
};

// Adds the command to the tool's; `options` takes what is parsed.
void add_batch_command(CLI::App& commands, batch_options& options);

// Writes the answers.
void run_batch(const batch_options& options);

}  // namespace tool
