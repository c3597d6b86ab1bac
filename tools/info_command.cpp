#include "info_command.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "arguments.h"
#include "json_text.h"
#include "network_facts.h"
#include "terminal.h"
#include "text_columns.h"
#include "tool_failure.h"
#include "tree_statistics.h"

namespace tool {
namespace {

using nlohmann::ordered_json;

constexpr const char* info_explanations =
    "What is printed:\n"
    "  Nodes by category and what their states are. Links: informational ones lead\n"
    "  into decisions, functional ones into functions or out of real-valued ones.\n"
    "  Numbers in tables: what the tables of the nodes hold, the largest of them with\n"
    "  its node. Without data: nodes that nothing gives a table.\n"
    "  Then the junction trees that quarn compile would make by default, found\n"
    "  without making their tables, so of networks too that are too large to compile.\n"
    "  Bytes to compile: what the tables of cliques and separators and the scratch\n"
    "  memory take. Propagation keeps a copy of the tables below 256 MiB.\n"
    "\n"
    "Exit status:\n"
    "  0  done, also when the network cannot be compiled, which is told then\n"
    "  1  failed: the model cannot be read or has no nodes\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn info chest_clinic.net\n"
    "  quarn info waste_incinerator.net --json";

ordered_json named(const most_of_all& most) {
    if (most.node == nullptr) return {};
    return {{"node", q_node_get_name(most.node)}, {"count", whole(most.count)}};
}

template <class Found>
ordered_json if_known(const std::optional<Found>& found) {
    return found ? ordered_json(*found) : ordered_json();
}

std::vector<std::string> names_of(const std::vector<q_node_t>& nodes) {
    std::vector<std::string> names;
    names.reserve(nodes.size());
    for (const q_node_t node : nodes) names.emplace_back(q_node_get_name(node));
    return names;
}

ordered_json describe_nodes(const network_facts& facts) {
    ordered_json sorts = ordered_json::array();
    for (const node_sort& sort : facts.sorts) {
        sorts.push_back({{"category", sort.category}, {"kind", sort.kind}});
        if (!sort.subtype.empty()) sorts.back()["subtype"] = sort.subtype;
        sorts.back()["count"] = sort.count;
    }
    return sorts;
}

ordered_json describe_trees(const tree_statistics& trees) {
    return {{"components", trees.trees},
            {"cliques", trees.cliques},
            {"largest_clique", names_of(trees.largest_clique)},
            {"largest_table_size", whole(trees.largest_table_size)},
            {"total_table_size", whole(trees.total_table_size)},
            {"bytes_to_compile", whole(trees.compiled_numbers * sizeof(q_number_t))}};
}

bool is_computable(const model& asked) {
    return std::ranges::any_of(asked.nodes(),
                               [](q_node_t node) { return q_node_get_kind(node) != q_kind_other; });
}

ordered_json describe(const model& asked) {
    ordered_json report = {{"model", asked.file()}};
    if (const char* title = q_domain_get_attribute(asked.domain(), "title"); title != nullptr)
        report["title"] = title;
    const network_facts facts = find_facts(asked);
    report["nodes"] = asked.nodes().size();
    report["sorts"] = describe_nodes(facts);
    report["links"] = {{"directed", facts.links.directed},
                       {"informational", facts.links.informational},
                       {"functional", facts.links.functional},
                       {"undirected", if_known(facts.links.undirected)}};
    report["most_parents"] = named(facts.parents);
    report["most_states"] = named(facts.states);
    report["numbers_in_tables"] = whole(facts.all_numbers);
    report["largest_table"] = named(facts.numbers);
    report["chain_components"] = if_known(facts.chain_components);
    report["models"] = facts.models;
    report["without_data"] =
        facts.without_data ? ordered_json(names_of(*facts.without_data)) : ordered_json();
    if (!is_computable(asked))
        report["cannot_be_compiled"] = "there are no chance or decision nodes to compute";
    else if (q_domain_triangulate(asked.domain(), q_triangulate_best_greedy) != q_error_none)
        report["cannot_be_compiled"] = in_words(q_error_code());
    else
        report["junction_trees"] = describe_trees(measure_trees(asked));
    return report;
}

std::string row(std::string title, const std::string& value) {
    constexpr size_t width = 25;
    std::ranges::replace(title, '_', ' ');
    return visible_line(padded(std::move(title), width) + value);
}

std::string shown(const ordered_json& value) {
    if (value.is_null()) return "too large";
    if (value.is_string()) return value.get<std::string>();
    if (value.is_object()) return shown(value["count"]) + " (" + value["node"].get<std::string>() + ")";
    if (!value.is_array()) return value.dump();
    std::string names;
    for (const ordered_json& name : value) names += (names.empty() ? "" : ",") + name.get<std::string>();
    return names;
}

std::string sorts_as_text(const ordered_json& sorts) {
    std::string text;
    for (const ordered_json& sort : sorts) {
        std::string title = "  " + sort["category"].get<std::string>();
        const char* const more = sort.contains("subtype") ? "subtype" : "kind";
        if (sort["category"] != "utility") title += ", " + sort[more].get<std::string>();
        text += row(title, sort["count"].dump());
    }
    return text;
}

std::string links_as_text(const ordered_json& links) {
    size_t total = 0;
    std::string text;
    for (const auto& [sort, count] : links.items()) {
        if (count.is_null() || count == 0) continue;
        total += count.get<size_t>();
        text += row("  " + sort, count.dump());
    }
    return row("links", std::to_string(total)) + text;
}

std::string as_text(const ordered_json& report) {
    std::string text;
    const auto add = [&](const ordered_json& from, const char* key) { text += row(key, shown(from[key])); };
    const auto add_if_any = [&](const char* key) {
        if (!report[key].empty() && report[key] != 0) add(report, key);
    };
    if (report.contains("title")) add(report, "title");
    add(report, "nodes");
    text += sorts_as_text(report["sorts"]) + links_as_text(report["links"]);
    add_if_any("chain_components");
    add_if_any("most_parents");
    add_if_any("most_states");
    add(report, "numbers_in_tables");
    add_if_any("largest_table");
    add_if_any("models");
    add_if_any("without_data");
    if (report.contains("cannot_be_compiled")) {
        add(report, "cannot_be_compiled");
        return text;
    }
    for (const auto& entry : report["junction_trees"].items())
        add(report["junction_trees"], entry.key().c_str());
    return text;
}

}  // namespace

void add_info_command(CLI::App& commands, info_options& options) {
    CLI::App& command =
        add_command(commands, "info", "Print what a network consists of", options.model, info_explanations);
    command.add_flag("--json", options.json, "Print JSON");
}

std::string run_info(const info_options& options) {
    const model asked(options.model);
    const ordered_json report = describe(asked);
    return options.json ? json_text(report) : as_text(report);
}

}  // namespace tool
