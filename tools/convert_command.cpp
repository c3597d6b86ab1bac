#include "convert_command.h"

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr const char* convert_explanations =
    "Writes the network that MODEL describes in the NET language. `-` stands for\n"
    "standard input and output. Numbers have eight significant digits; comments are\n"
    "lost. OUT may be MODEL.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  failed: the model cannot be read, or holds infinite numbers, or OUT cannot\n"
    "     be written\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn convert chest_clinic.net copy.net\n"
    "  quarn convert chest_clinic.net -";

[[noreturn]] void fail(const convert_options& options) {
    const q_error_t code = q_error_code();
    if (code == q_error_io) throw command_failure(options.output + ": cannot be written");
    fail_with_library_error(options.model, code);
}

}  // namespace

void add_convert_command(CLI::App& commands, convert_options& options) {
    CLI::App& command = add_command(commands, "convert", "Read a network and write it again", options.model,
                                    convert_explanations);
    command.add_option("OUT", options.output, "The file to be written; - for standard output")
        ->type_name("FILE")
        ->required();
}

std::string run_convert(const convert_options& options) {
    const domain_owner domain = read_domain(options.model);
    if (options.output == "-") {
        std::string text = net_text(domain.get());
        if (text.empty()) fail(options);
        return text;
    }
    if (q_domain_save_as_net(domain.get(), options.output.c_str()) != q_error_none) fail(options);
    return "";
}

}  // namespace tool
