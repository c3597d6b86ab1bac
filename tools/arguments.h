// What the command lines of several commands have in common.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
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

// The same, each node once; all nodes of the model where no names are given.
std::vector<q_node_t> shown_nodes(const model& asked, const std::vector<std::string>& names);

// The number that nothing but decimal digits say, the largest where they say more; nothing for another text.
std::optional<size_t> parse_whole_number(std::string_view text);

// An option that takes one of a few words has the type name "WORD|WORD|...". Nothing for other type names.
std::vector<std::string> words_of(std::string_view type_name);

}  // namespace tool
