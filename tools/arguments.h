// What the command lines of several commands have in common.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "model.h"

namespace tool {

// Adds a command that takes a MODEL first; its help ends with the explanations.
CLI::App& add_command(CLI::App& commands, const char* name, const char* description, std::string& model_file,
                      const char* explanations);

void add_evidence(CLI::App& command, std::vector<std::string>& evidence,
                  std::optional<std::string>& case_file);

// Nodes are listed as names with commas between them, in any number of options.
CLI::Option* add_node_list(CLI::App& command, const char* option, std::vector<std::string>& names,
                           const char* description);

// Fails when a node does not exist.
std::vector<q_node_t> nodes_called(const model& asked, const std::vector<std::string>& names);

}  // namespace tool
