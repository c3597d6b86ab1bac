#include "beliefs_command.h"

#include <CLI/CLI.hpp>

#include "beliefs.h"
#include "evidence.h"

namespace tool {

void add_beliefs_command(CLI::App& commands, beliefs_options& options) {
    CLI::App* command = commands.add_subcommand("beliefs", "Print the beliefs of all nodes given evidence");
    command->add_option("MODEL", options.model, "Network in the NET language")->required();
    command
        ->add_option("-e,--evidence", options.evidence,
                     "A state by its label or as #INDEX (from 0), or a likelihood as (WEIGHT WEIGHT ...)")
        ->type_name("NODE=STATE");
    command->add_flag("--json", options.json, "Print JSON, with numbers in full precision");
    command->footer("Example:\n"
                    "  quarn beliefs chest_clinic.net --evidence asia=yes 'xray=(0.9 0.2)'");
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
