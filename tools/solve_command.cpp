#include "solve_command.h"

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "evidence.h"
#include "potential_data.h"
#include "solve.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* solve_explanations =
    "The policies of decisions are improved, one at a time, until no change of a\n"
    "single one would raise the expected utility (single policy updating, Lauritzen &\n"
    "Nilsson 2001).\n"
    "\n"
    "Evidence is written as for quarn beliefs; a decision whose state is given is\n"
    "made. What follows from an open decision cannot be observed.\n"
    "\n"
    "  --start uniform: all states alike, the default. In a soluble diagram, such as\n"
    "  an influence diagram in which nothing that was known is forgotten, policies\n"
    "  without zeros lead to the global optimum, in the first cycle. In general the\n"
    "  result is a local optimum: no single policy can be improved, several together\n"
    "  perhaps.\n"
    "  --start file: the policies in MODEL. The result is never worse than these;\n"
    "  from policies with zeros it may be another local optimum.\n"
    "  --minimize: links into decisions that no best policy needs, as the diagram\n"
    "  shows without regard to evidence, are removed before, and listed. Policies in\n"
    "  MODEL keep what they hold for the first state of the parent.\n"
    "\n"
    "What is printed:\n"
    "  The policy of each decision: for each configuration of its parents the state\n"
    "  to choose; where several states get weight, those and their weights. \"(cannot\n"
    "  occur)\": not with the evidence, whatever is decided. Then what is expected of\n"
    "  each utility node, and of all together before and after.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be used, has no decisions or no utilities, or the\n"
    "     evidence is impossible in it\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn solve oil_wildcatter.net\n"
    "  quarn solve oil_wildcatter.net -e test=yes seismic=open --minimize";

}  // namespace

void add_solve_command(CLI::App& commands, solve_options& options) {
    CLI::App& command = add_command(commands, "solve", "Find the best policies of decisions", options.model,
                                    solve_explanations);
    add_evidence(command, options.evidence, options.case_file);
    command.add_option("--start", options.start, "Policies to begin with, see below (uniform)")
        ->type_name("uniform|file");
    command.add_flag("--minimize", options.minimize, "Remove links into decisions that do not matter");
    command.add_flag("--json", options.json, "Print JSON, with numbers in full precision");
}

std::string run_solve(const solve_options& options) {
    if (options.start != "uniform" && options.start != "file")
        throw usage_failure("unknown start " + options.start + "; there are uniform and file");
    const std::vector<evidence> given = parse_evidence(options.evidence);
    model asked(options.model);
    warn_of_models_without_data(asked);
    enter_evidence(asked, options.case_file, given);
    std::optional<std::vector<link_names>> removed;
    if (options.minimize) removed = remove_needless_links(asked);
    if (options.start == "uniform") set_uniform_policies(asked);
    solution found = solve(asked);
    found.start = options.start;
    found.removed_links = std::move(removed);
    mark_impossible_rows(asked, found.policies);
    return options.json ? solution_as_json(found) : solution_as_text(found);
}

}  // namespace tool
