#include "dsep_command.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "json_text.h"
#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

using names = std::vector<std::string>;

constexpr const char* dsep_explanations =
    "What is learnt of a source can change the beliefs of nodes d-connected to it. It\n"
    "cannot change those of d-separated nodes, whatever the numbers in the model are.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be used, or has no such node\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn dsep chest_clinic.net --source asia --given either";

// With the null that the library looks for.
std::vector<q_node_t> ended_list(const model& asked, const names& called) {
    std::vector<q_node_t> nodes = nodes_called(asked, called);
    for (const q_node_t node : nodes)
        if (q_node_get_kind(node) == q_kind_other)
            throw command_failure(asked.file() + ": node " + q_node_get_name(node) + " is " + sort_of(node) +
                                  ": it can be no source and takes no evidence");
    nodes.push_back(nullptr);
    return nodes;
}

names ask(const model& asked, const dsep_options& options,
          decltype(q_domain_get_d_connected_nodes) question) {
    const q_node_t* answer =
        question(asked.domain(), ended_list(asked, options.sources).data(),
                 ended_list(asked, options.given).data(), ended_list(asked, options.soft).data());
    if (answer == nullptr) fail_with_library_error(asked.file());
    names found;
    for (; *answer != nullptr; ++answer) found.emplace_back(q_node_get_name(*answer));
    return found;
}

std::string as_text(const char* title, const names& shown, const model& asked, const dsep_options& options) {
    std::string text = title;
    for (const std::string& name : shown) {
        const std::string label = q_node_get_label(asked.node_called(name));
        const auto note_if_in = [&](const names& list, const char* note) {
            return std::ranges::count(list, name) > 0 ? note : "";
        };
        text +=
            visible_line("  " + name + (label.empty() || label == name ? "" : " (" + label + ")") +
                         note_if_in(options.sources, "  [source]") + note_if_in(options.given, "  [given]") +
                         note_if_in(options.soft, "  [soft evidence]"));
    }
    return shown.empty() ? text + "  (none)\n" : text;
}

std::string as_json(const names& connected, const names& separated, const dsep_options& options) {
    const nlohmann::ordered_json document = {{"model", options.model},   {"sources", options.sources},
                                             {"given", options.given},   {"soft", options.soft},
                                             {"d_connected", connected}, {"d_separated", separated}};
    return json_text(document);
}

}  // namespace

void add_dsep_command(CLI::App& commands, dsep_options& options) {
    CLI::App& command = add_command(commands, "dsep", "Print which nodes are d-connected to others",
                                    options.model, dsep_explanations);
    add_node_list(command, "-s,--source", options.sources, "The nodes that something is learnt of")
        ->required();
    add_node_list(command, "-g,--given", options.given, "Nodes that are observed");
    add_node_list(command, "--soft", options.soft, "Nodes on which there is a likelihood");
    command.add_flag("--json", options.json, "Print JSON");
}

std::string run_dsep(const dsep_options& options) {
    const model asked(options.model);
    const names connected = ask(asked, options, q_domain_get_d_connected_nodes);
    const names separated = ask(asked, options, q_domain_get_d_separated_nodes);
    if (options.json) return as_json(connected, separated, options);
    return as_text("d-connected:\n", connected, asked, options) +
           as_text("\nd-separated:\n", separated, asked, options);
}

}  // namespace tool
