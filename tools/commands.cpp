#include "commands.h"

#include <cstdio>
#include <memory>

#include <CLI/CLI.hpp>

#include "batch_command.h"
#include "beliefs_command.h"
#include "case_command.h"
#include "check_command.h"
#include "compile_command.h"
#include "convert_command.h"
#include "draw_command.h"
#include "dsep_command.h"
#include "info_command.h"
#include "report_command.h"
#include "sample_command.h"
#include "solve_command.h"
#include "tool_failure.h"

namespace tool {

void print(std::string_view text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) != 0 || !written) throw command_failure("standard output: cannot be written");
}

tool_commands::tool_commands() : parser_("Exact reasoning with probabilistic graphical models", "quarn") {
    parser_.get_formatter()->label("SUBCOMMAND", "COMMAND");
    parser_.require_subcommand(0, 1);
    parser_.footer("Run quarn COMMAND --help for what a command takes.");
    parser_.set_version_flag("--version", "quarn " QUARN_VERSION);

    begin_group("Questions to a network");
    add(add_beliefs_command, run_beliefs);
    add(add_dsep_command, run_dsep);
    add(add_solve_command, run_solve);
    add(add_draw_command, run_draw);
    add(add_report_command, run_report);
    begin_group("Cases");
    add(add_batch_command, run_batch);
    add(add_sample_command, run_sample);
    add(add_case_command, run_case);
    begin_group("The network itself");
    add(add_info_command, run_info);
    add_finding(add_check_command, run_check);
    add(add_compile_command, run_compile);
    add(add_convert_command, run_convert);
}

exit_status tool_commands::run_parsed() const {
    const std::vector<CLI::App*> parsed = parser_.get_subcommands();
    if (parsed.empty()) throw usage_failure("no command is given");
    return runs_.at(parsed.front()->get_name())();
}

template <class Options>
void tool_commands::add(adder<Options> add_command, void (*run)(const Options&)) {
    add_with(add_command, [run](const Options& options) {
        run(options);
        return exit_done;
    });
}

template <class Options>
void tool_commands::add(adder<Options> add_command, std::string (*run)(const Options&)) {
    add_with(add_command, [run](const Options& options) {
        print(run(options));
        return exit_done;
    });
}

template <class Options>
void tool_commands::add_finding(adder<Options> add_command, std::string (*run)(const Options&)) {
    add_with(add_command, [run](const Options& options) {
        const std::string found = run(options);
        print(found);
        return found.empty() ? exit_done : exit_failed;
    });
}

template <class Options, class Run>
void tool_commands::add_with(adder<Options> add_command, const Run& run) {
    auto options = std::make_shared<Options>();
    add_command(parser_, *options);
    CLI::App* const added = parser_.get_subcommands([](const CLI::App*) { return true; }).back();
    added->group(heading_);
    runs_[added->get_name()] = [=] { return run(*options); };
}

}  // namespace tool
