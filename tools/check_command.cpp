#include "check_command.h"

#include <CLI/CLI.hpp>

#include "arguments.h"
#include "network_faults.h"
#include "source_file.h"
#include "terminal.h"

namespace tool {
namespace {

constexpr const char* check_explanations =
    "What is printed, a line each:\n"
    "  FILE:LINE: what the reader finds, errors and warnings. After errors, no more.\n"
    "  FILE: what can be read but not computed with: probabilities and variances that\n"
    "  are negative, numbers that are infinite, probabilities that sum to 0; real-\n"
    "  valued functions without model.\n"
    "  FILE: what may be meant otherwise: probabilities that do not sum to 1, which\n"
    "  are divided by their sum; states that cannot occur, by the zeros in the tables\n"
    "  of their node and its ancestors; nodes without potential data, unless a number\n"
    "  is infinite; discrete functions without model.\n"
    "\n"
    "Exit status:\n"
    "  0  nothing was found, and nothing printed\n"
    "  1  something was found, or the file cannot be read\n"
    "  2  the command line is wrong\n"
    "\n"
    "Example:\n"
    "  quarn check chest_clinic.net";

struct heard {
    const std::string& file;
    std::string text;
};

void hear(size_t line, const char* message, void* data) {
    auto& messages = *static_cast<heard*>(data);
    messages.text += visible_line(messages.file + ":" + std::to_string(line) + ": " + message);
}

}  // namespace

void add_check_command(CLI::App& commands, check_options& options) {
    add_command(commands, "check", "Find what is wrong with a network", options.model, check_explanations);
}

std::string run_check(const check_options& options) {
    const source_file file(options.model);
    heard messages{options.model, {}};
    const domain_owner domain(q_net_parse_domain(file.path().c_str(), hear, &messages));
    const q_error_t code = q_error_code();
    if (domain == nullptr && messages.text.empty()) file.fail_to_read(code);
    if (domain != nullptr)
        for (const std::string& fault : find_network_faults(domain.get()))
            messages.text += visible_line(options.model + ": " + fault);
    return messages.text;
}

}  // namespace tool
