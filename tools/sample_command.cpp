#include "sample_command.h"

#include <algorithm>
#include <limits>

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "evidence.h"
#include "output_file.h"
#include "potential_data.h"
#include "progress.h"
#include "sample_csv.h"
#include "table_fault.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* sample_explanations =
    "Draws cases at random and writes them as comma-separated values: the names of\n"
    "the nodes, then a line for each case. States are written as they are selected\n"
    "in evidence, other values as numbers in full precision. The field of a function\n"
    "that has no value in a case is empty; why is told at the end.\n"
    "\n"
    "Evidence is written as for quarn beliefs. Without any but states of decisions\n"
    "each node is drawn given its parents; with any, and where there are discrete\n"
    "functions, the network is compiled, and cases are drawn given the evidence. Open\n"
    "decisions are drawn from their policies. A discrete function is in the state\n"
    "that quarn beliefs computes for it, which is the same in all cases.\n"
    "\n"
    "The same arguments give the same cases. --seed gives others; the low 30 bits\n"
    "count, and without it the seed is 310952.\n"
    "\n"
    "FILE stays as it was until all cases are written.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be used, the evidence is impossible in it, or the\n"
    "     output cannot be written\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn sample chest_clinic.net -n 1000 -o cases.csv\n"
    "  quarn sample chest_clinic.net -n 9 --seed 7 -e xray=yes --nodes cancer,smoking\n"
    "  quarn sample oil_wildcatter.net -n 5 -e test=yes";

// More than fits is as good as the most.
size_t parse_case_count(const std::string& text) {
    const std::optional<size_t> count = parse_whole_number(text);
    if (!count) throw usage_failure("--count needs a whole number from 0");
    return *count;
}

uint32_t parse_seed(const std::string& text) {
    constexpr uint32_t largest = std::numeric_limits<uint32_t>::max();
    const std::optional<size_t> seed = parse_whole_number(text);
    if (!seed || *seed > largest)
        throw usage_failure("--seed needs a whole number from 0 to " + std::to_string(largest));
    return static_cast<uint32_t>(*seed);
}

// Cases are drawn from the tables of the nodes, unless they depend on what a propagation finds.
bool needs_propagation(q_node_t node) {
    if (q_node_get_kind(node) == q_kind_other) return false;
    if (q_node_get_category(node) == q_category_function) return q_node_get_model(node) != nullptr;
    const bool is_made =
        q_node_get_category(node) == q_category_decision && q_node_get_selected_state(node) >= 0;
    return q_node_evidence_is_entered(node) == 1 && !is_made;
}

void draw(const model& asked) {
    if (q_domain_simulate(asked.domain()) == q_error_none) return;
    const q_error_t code = q_error_code();
    std::string fault;
    if (code == q_error_invalid_probability_potential) fault = find_table_fault(asked.nodes());
    if (!fault.empty()) throw command_failure(asked.file() + ": " + fault);
    fail_with_library_error(asked.file(), code);
}

void write_cases(const model& asked, size_t count, sample_csv& cases, output_file& output) {
    constexpr size_t buffer_size = 64 * 1024;
    progress shown(count, "cases", !output.is_terminal());
    std::string text = cases.header();
    for (size_t done = 0; done < count; shown.reach(++done)) {
        draw(asked);
        cases.append_case(text);
        if (text.size() < buffer_size) continue;
        output.write(text);
        text.clear();
    }
    output.write(text);
    output.finish();
}

}  // namespace

void add_sample_command(CLI::App& commands, sample_options& options) {
    CLI::App& command =
        add_command(commands, "sample", "Draw cases at random", options.model, sample_explanations);
    const auto set_count = [&options](const std::string& text) { options.count = parse_case_count(text); };
    command.add_option_function<std::string>("-n,--count", set_count, "The number of cases (1)")
        ->type_name("N");
    const auto set_seed = [&options](const std::string& text) { options.seed = parse_seed(text); };
    command.add_option_function<std::string>("--seed", set_seed, "Of the random numbers (310952)")
        ->type_name("S");
    add_evidence(command, options.evidence, options.case_file);
    add_node_list(command, "--nodes", options.nodes, "Write these nodes only, in this order");
    command.add_option("-o,--output", options.output)
        ->type_name("FILE")
        ->description("The file to be written (standard output)");
}

void run_sample(const sample_options& options) {
    const std::vector<evidence> given = parse_evidence(options.evidence);
    model asked(options.model);
    warn_of_models_without_data(asked);
    enter_evidence(asked, options.case_file, given);
    sample_csv cases(asked, shown_nodes(asked, options.nodes));
    output_file output(options.output);
    if (std::ranges::any_of(asked.nodes(), needs_propagation)) asked.compute();
    if (options.seed) q_domain_seed_random(asked.domain(), *options.seed);
    write_cases(asked, options.count, cases, output);
    cases.report_missing_values();
}

}  // namespace tool
