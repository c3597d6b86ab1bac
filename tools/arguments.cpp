#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include <CLI/CLI.hpp>

namespace tool {

CLI::App& add_command(CLI::App& commands, const char* name, const char* description, std::string& model_file,
                      const char* explanations) {
    CLI::App* command = commands.add_subcommand(name, description);
    command->group("Commands");
    command->add_option("MODEL", model_file, "The network, as NET text; - for standard input")
        ->type_name("FILE")
        ->required();
    command->footer(explanations);
    return *command;
}

void add_evidence(CLI::App& command, std::vector<std::string>& evidence,
                  std::optional<std::string>& case_file) {
    constexpr int evidence_limit = 1 << 20;
    command.add_option("-e,--evidence", evidence, "What is known of nodes, see below")
        ->type_name("NODE=STATE ...")
        // Extra arguments are for options without limit only, whose arguments are split when they are in brackets.
        ->expected(1, evidence_limit)
        ->allow_extra_args(false);
    command.add_option("--case", case_file, "Evidence from a file; -e replaces it")->type_name("FILE");
}

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

std::vector<q_node_t> shown_nodes(const model& asked, const std::vector<std::string>& names) {
    if (names.empty()) return asked.nodes();
    std::vector<q_node_t> shown;
    for (const q_node_t node : nodes_called(asked, names))
        if (std::ranges::find(shown, node) == shown.end()) shown.push_back(node);
    return shown;
}

std::optional<size_t> parse_whole_number(std::string_view text) {
    size_t number = std::numeric_limits<size_t>::max();
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem == std::errc::invalid_argument || end != text.data() + text.size()) return {};
    return number;
}

std::vector<std::string> words_of(std::string_view type_name) {
    std::vector<std::string> words;
    if (type_name.find('|') == std::string_view::npos) return words;
    for (;;) {
        const size_t end = std::min(type_name.find('|'), type_name.size());
        words.emplace_back(type_name.substr(0, end));
        if (end == type_name.size()) return words;
        type_name.remove_prefix(end + 1);
    }
}

}  // namespace tool
