#include "compile_command.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <utility>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "arguments.h"
#include "json_text.h"
#include "tool_failure.h"
#include "tree_statistics.h"

namespace tool {
namespace {

using nlohmann::ordered_json;

// In the order in which they are numbered.
constexpr const char* methods =
    "clique-size|clique-weight|fill-in-size|fill-in-weight|total-weight|best-greedy";

constexpr const char* compile_explanations =
    "Methods: clique-size, clique-weight, fill-in-size, fill-in-weight; best-greedy,\n"
    "the best of these; total-weight, a search for the least total table size.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed; if the tables do not fit the memory, what is known is printed all\n"
    "     the same\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn compile chest_clinic.net --method total-weight --log trace.txt";

q_triangulation_method_t method_called(const std::string& name) {
    const std::vector<std::string> names = words_of(methods);
    const auto found = std::ranges::find(names, name);
    if (found == names.end()) throw usage_failure("unknown method " + name);
    return q_triangulate_clique_size + static_cast<q_triangulation_method_t>(found - names.begin());
}

// Milliseconds since the last lap, to the microsecond.
double lap(std::chrono::steady_clock::time_point& last) {
    const auto now = std::chrono::steady_clock::now();
    return std::round(std::chrono::duration<double, std::micro>(now - std::exchange(last, now)).count()) /
           1e3;
}

ordered_json describe(const model& asked, const std::string& method) {
    const tree_statistics trees = measure_trees(asked);
    size_t links = 0;
    for (const q_node_t node : asked.nodes()) links += listed(q_node_get_parents(node)).size();
    std::vector<std::string> names;
    for (const q_node_t member : trees.largest_clique) names.emplace_back(q_node_get_name(member));
    return {{"model", asked.file()},
            {"method", method},
            {"nodes", asked.nodes().size()},
            {"links", links},
            {"components", trees.trees},
            {"cliques", trees.cliques},
            {"largest_clique", names},
            {"largest_table_size", whole(trees.largest_table_size)},
            {"total_table_size", whole(trees.total_table_size)},
            {"bytes", whole(trees.clique_numbers * sizeof(q_number_t))},
            {"fill_in_links", trees.fill_in_links}};
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
                                    options.model, compile_explanations);
    command.add_option("-m,--method", options.method, "How to triangulate, see below (best-greedy)")
        ->type_name(methods)
        ->option_text("NAME");
    command.add_option("--log", options.log, "The file that a trace is written to")->type_name("FILE");
    command.add_flag("--json", options.json, "Print JSON");
}

std::string run_compile(const compile_options& options) {
    const q_triangulation_method_t method = method_called(options.method);
    if (options.log == "-")
        throw usage_failure("--log needs a file: its trace does not go to standard output");
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
