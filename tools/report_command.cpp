#include "report_command.h"

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "evidence.h"
#include "output_file.h"
#include "potential_data.h"
#include "report.h"
#include "terminal.h"

namespace tool {
namespace {

constexpr const char* report_explanations =
    "The page has the picture that quarn draw makes, the evidence and its\n"
    "probability, the beliefs of all nodes (with evidence what it moved most first,\n"
    "and what they were without), means and standard deviations, expected utilities,\n"
    "policies, and the size of the tables. It needs no other file and no network, and\n"
    "prints well. Policies are those in MODEL; with --solve what quarn solve makes of\n"
    "uniform ones. Without Graphviz (Debian: package graphviz) there is no picture.\n"
    "Of a network that cannot be computed the page says why.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be read, the evidence is impossible in it, there\n"
    "     is nothing to solve, or the page cannot be written\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn report chest_clinic.net -e asia=yes xray=yes -o clinic.html\n"
    "  quarn report oil_wildcatter.net --solve -o oil.html";

}  // namespace

void add_report_command(CLI::App& commands, report_options& options) {
    CLI::App& command = add_command(commands, "report", "Write a page about a network and its beliefs",
                                    options.model, report_explanations);
    add_evidence(command, options.evidence, options.case_file);
    command.add_flag("--solve", options.solve, "Improve the policies of decisions first");
    command.add_option("-o,--output", options.output, "The page to be written; - is standard output")
        ->type_name("FILE")
        ->required();
}

void run_report(const report_options& options) {
    const std::vector<evidence> given = parse_evidence(options.evidence);
    model asked(options.model);
    warn_of_models_without_data(asked);
    enter_evidence(asked, options.case_file, given);
    const network_report made = make_report(asked, options.solve);
    for (const std::string& problem : {made.made.problem, made.missing_picture})
        if (!problem.empty()) report("quarn: warning: " + problem);
    output_file file(options.output);
    file.write(report_as_html(made));
    file.finish();
}

}  // namespace tool
