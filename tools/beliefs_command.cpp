#include "beliefs_command.h"

#include <CLI/CLI.hpp>

#include "beliefs.h"
#include "evidence.h"

namespace tool {
namespace {

constexpr int evidence_limit = 1 << 20;

constexpr const char* explanations =
    "Evidence:\n"
    "  NODE=LABEL        The node is in the state with this label.\n"
    "  NODE=#INDEX       The node is in the state with this number, from 0.\n"
    "  NODE=(W W ...)    A likelihood: one weight for each state, in order, that says\n"
    "                    how probable what was observed is if the node is in it.\n"
    "                    Weights are not negative; only their ratios affect beliefs.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be used, or the evidence is impossible in it\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn beliefs chest_clinic.net --evidence asia=yes 'xray=(0.9 0.2)'";

}  // namespace

void add_beliefs_command(CLI::App& commands, beliefs_options& options) {
    CLI::App* command = commands.add_subcommand("beliefs", "Print the beliefs of all nodes given evidence");
    command->group("Commands");
    command->add_option("MODEL", options.model, "The network, in the NET language")
        ->type_name("FILE")
        ->required();
    command->add_option("-e,--evidence", options.evidence, "What is known of nodes, see below")
        ->type_name("NODE=STATE ...")
        // Extra arguments are for options without limit only, whose arguments are split when they are in brackets.
        ->expected(1, evidence_limit)
        ->allow_extra_args(false);
    command->add_flag("--json", options.json, "Print JSON, with numbers in full precision");
    command->footer(explanations);
}

std::string run_beliefs(const beliefs_options& options) {
    const std::vector<evidence> given = parse_evidence(options.evidence);
    model asked(options.model);
    for (const evidence& entered : given) enter_evidence(asked, entered);
    asked.compute();
    const model_beliefs result = collect_beliefs(asked);
    return options.json ? beliefs_as_json(result) : beliefs_as_text(result);
}

}  // namespace tool
