#include "case_command.h"

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "evidence.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* explanations =
    "Evidence is written as for quarn beliefs. Values are written with eight digits,\n"
    "the weights of likelihoods with six.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be read, has no such node or state, or the case\n"
    "     file cannot be read or written\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn case chest_clinic.net -e asia=yes 'xray=(0.9 0.2)' -o patient.case\n"
    "  quarn case chest_clinic.net --case patient.case -e smoking=no -o patient.case\n"
    "  quarn beliefs chest_clinic.net --case patient.case";

}  // namespace

void add_case_command(CLI::App& commands, case_options& options) {
    CLI::App& command =
        add_command(commands, "case", "Write evidence to a case file", options.model, explanations);
    add_evidence(command, options.evidence, options.case_file);
    command.add_option("-o,--output", options.output)
        ->type_name("FILE")
        ->description("The case file to be written; - for standard output")
        ->required();
}

std::string run_case(const case_options& options) {
    const std::vector<evidence> given = parse_evidence(options.evidence);
    const model asked(options.model);
    enter_evidence(asked, options.case_file, given);
    const char* const path = options.output == "-" ? "/dev/stdout" : options.output.c_str();
    const q_status_t status = q_domain_save_case(asked.domain(), path);
    if (status == q_error_io) throw command_failure(options.output + ": cannot be written");
    if (status != q_error_none) fail_with_library_error(asked.file());
    return "";
}

}  // namespace tool
