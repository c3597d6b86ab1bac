#include "node_list.h"

#include <CLI/CLI.hpp>

namespace tool {

CLI::Option* add_node_list(CLI::App& command, const char* option, std::vector<std::string>& names,
                           const char* description) {
    return command.add_option(option, names, description)
        ->type_name("NODE,...")
        ->delimiter(',')
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
}

std::vector<q_node_t> nodes_called(const model& asked, const std::vector<std::string>& names) {
    std::vector<q_node_t> nodes;
    for (const std::string& name : names) nodes.push_back(asked.node_called(name));
    return nodes;
}

}  // namespace tool
