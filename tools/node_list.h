// Nodes as they are listed on the command line: names with commas between them, in any number of options.
#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "model.h"

namespace tool {

CLI::Option* add_node_list(CLI::App& command, const char* option, std::vector<std::string>& names,
                           const char* description);

// Fails when a node does not exist.
std::vector<q_node_t> nodes_called(const model& asked, const std::vector<std::string>& names);

}  // namespace tool
