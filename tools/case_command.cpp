#include "case_command.h"

#include <array>
#include <cstdio>
#include <memory>

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "evidence.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* case_explanations =
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

void save(const model& asked, const std::string& path, const std::string& shown_path) {
    const q_status_t status = q_domain_save_case(asked.domain(), path.c_str());
    if (status == q_error_io) throw command_failure(shown_path + ": cannot be written");
    if (status != q_error_none) fail_with_library_error(asked.file());
}

// By way of a file without a name: standard output may be one that has something already, which must stay.
std::string text_of_case(const model& asked) {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::tmpfile(), std::fclose);
    if (file == nullptr) throw command_failure("no temporary file can be made");
    save(asked, "/dev/fd/" + std::to_string(::fileno(file.get())), "a temporary file");
    std::string text;
    std::array<char, 4096> piece{};
    while (const size_t length = std::fread(piece.data(), 1, piece.size(), file.get()))
        text.append(piece.data(), length);
    return text;
}

}  // namespace

void add_case_command(CLI::App& commands, case_options& options) {
    CLI::App& command =
        add_command(commands, "case", "Write evidence to a case file", options.model, case_explanations);
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
    if (options.output == "-") return text_of_case(asked);
    save(asked, options.output, options.output);
    return "";
}

}  // namespace tool
