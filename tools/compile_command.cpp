#include "compile_command.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <set>
#include <utility>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "arguments.h"
#include "json_text.h"
#include "tool_failure.h"

namespace tool {
namespace {

using nlohmann::ordered_json;
using node_list = std::vector<q_node_t>;
using link_set = std::set<std::pair<q_node_t, q_node_t>>;

constexpr const char* explanations =
    "Methods: clique-size, clique-weight, fill-in-size, fill-in-weight; best-greedy,\n"
    "the best of these; total-weight, a search for the least total table size.\n"
    "\n"
    "Exit status: 0 done; 1 failed (if the tables do not fit the memory, what is known\n"
    "is printed all the same); 2 the command line is wrong.\n"
    "\n"
    "Example:\n"
    "  quarn compile chest_clinic.net --method total-weight --log trace.txt";

q_triangulation_method_t method_called(const std::string& name) {
    constexpr std::array names = {"clique-size",    "clique-weight", "fill-in-size",
                                  "fill-in-weight", "total-weight",  "best-greedy"};  // as they are numbered
    const auto* const found = std::ranges::find(names, name);
    if (found == names.end()) throw usage_failure("unknown method " + name);
    return q_triangulate_clique_size + static_cast<q_triangulation_method_t>(found - names.begin());
}

// Milliseconds since the last lap, to the microsecond.
double lap(std::chrono::steady_clock::time_point& last) {
    const auto now = std::chrono::steady_clock::now();
    return std::round(std::chrono::duration<double, std::micro>(now - std::exchange(last, now)).count()) /
           1e3;
}

node_list listed(const q_node_t* nodes) {
    node_list list;
    for (; *nodes != nullptr; ++nodes) list.push_back(*nodes);
    return list;
}

void connect(node_list nodes, link_set& links) {
    std::erase_if(nodes, [](q_node_t node) { return q_node_get_kind(node) == q_kind_other; });
    for (const q_node_t node : nodes)
        for (const q_node_t other : nodes)
            if (node < other) links.emplace(node, other);
}

// A configuration has a probability, and a mean and a row of a symmetric matrix for each continuous node.
long double table_size(const node_list& members) {
    const auto is_continuous = [](q_node_t node) { return q_node_get_kind(node) == q_kind_continuous; };
    const auto continuous = static_cast<long double>(std::ranges::count_if(members, is_continuous));
    long double size = 1 + continuous * (continuous + 3) / 2;
    for (const q_node_t member : members)
        if (!is_continuous(member)) size *= static_cast<long double>(q_node_get_number_of_states(member));
    return size;
}

// Null where it does not fit 64 bits, for which the library returns the largest number.
ordered_json whole(long double number) {
    return number < 0x1p64L - 1 ? ordered_json(static_cast<uint64_t>(number)) : ordered_json();
}

ordered_json describe(const model& asked, const std::string& method) {
    size_t links = 0, trees = 0, cliques = 0;
    long double total = 0, numbers = 0;
    std::pair<long double, node_list> largest;
    link_set graph;  // moral, then triangulated
    for (const q_node_t node : asked.nodes()) {
        node_list family = listed(q_node_get_parents(node));
        links += family.size();
        family.push_back(node);
        if (q_node_get_category(node) != q_category_function) connect(family, graph);
    }
    const size_t moral_links = graph.size();
    for (q_junction_tree_t tree = q_domain_get_first_junction_tree(asked.domain()); tree != nullptr;
         tree = q_junction_tree_get_next(tree), ++trees) {
        total += static_cast<long double>(q_junction_tree_get_total_size(tree));
        for (const q_clique_t* clique = q_junction_tree_get_cliques(tree); *clique != nullptr;
             ++clique, ++cliques) {
            const node_list members = listed(q_clique_get_members(*clique));
            connect(members, graph);
            const long double size = table_size(members);
            numbers += size;
            if (size > largest.first) largest = {size, members};
        }
    }
    std::vector<std::string> names;
    for (const q_node_t member : largest.second) names.emplace_back(q_node_get_name(member));
    return {{"model", asked.file()},
            {"method", method},
            {"nodes", asked.nodes().size()},
            {"links", links},
            {"components", trees},
            {"cliques", cliques},
            {"largest_clique", names},
            {"largest_table_size", whole(largest.first)},
            {"total_table_size", whole(total)},
            {"bytes", whole(numbers * sizeof(q_number_t))},
            {"fill_in_links", graph.size() - moral_links}};
}

std::string as_text(const ordered_json& report) {
    std::string text;
    for (const auto& [key, value] : report.items()) {
        if (key == "model") continue;
        std::string line = key;
        std::ranges::replace(line, '_', ' ');
        line.resize(20, ' ');
        line += value.is_null() ? "too large" : value.dump();  // else names and numbers
        std::erase_if(line, [](char c) { return c == '[' || c == '"' || c == ']'; });
        text += line + "\n";
    }
    return text;
}

void require_done(q_status_t status, const compile_options& options) {
    if (status == q_error_io) throw command_failure(options.log.value_or("log") + ": cannot be written");
    if (status != q_error_none) fail_with_library_error(options.model, status);
}

}  // namespace

void add_compile_command(CLI::App& commands, compile_options& options) {
    CLI::App& command = add_command(commands, "compile", "Print how large the tables of a model are",
                                    options.model, explanations);
    command.add_option("-m,--method", options.method, "How to triangulate, see below (best-greedy)")
        ->type_name("NAME");
    command.add_option("--log", options.log, "The file that a trace is written to")->type_name("FILE");
    command.add_flag("--json", options.json, "Print JSON");
}

std::string run_compile(const compile_options& options) {
    const q_triangulation_method_t method = method_called(options.method);
    auto start = std::chrono::steady_clock::now();
    const model asked(options.model);
    const double read = lap(start);
    asked.require_computable();
    if (options.log) require_done(q_domain_set_log_file(asked.domain(), options.log->c_str(), 0), options);
    lap(start);
    require_done(q_domain_triangulate(asked.domain(), method), options);
    const double triangulate = lap(start);
    ordered_json report = describe(asked, options.method);
    lap(start);
    const q_status_t status = q_domain_compile(asked.domain());
    const double compile = lap(start);
    report["read_ms"] = read;
    report["triangulate_ms"] = triangulate;
    report["compile_ms"] = status == q_error_none ? ordered_json(compile) : ordered_json();
    std::string text = options.json ? json_text(report) : as_text(report);
    if (status != q_error_none && status != q_error_io) std::fputs(text.c_str(), stdout);
    require_done(status, options);
    return text;
}

}  // namespace tool
