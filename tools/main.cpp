// The command-line tool. Exit status: 0 done, 1 failed, 2 wrong command line.

#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>

#include "beliefs_command.h"
#include "tool_failure.h"

namespace {

enum exit_status { exit_done = 0, exit_failed = 1, exit_usage = 2 };

exit_status complain(exit_status status, const char* message) {
    if (*message != '\0') std::fprintf(stderr, "quarn: %s\n", message);
    return status;
}

exit_status print(const std::string& text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) != 0 || !written)
        return complain(exit_failed, "standard output: cannot be written");
    return exit_done;
}

// Help and version are thrown by the command-line parser too.
exit_status finish_parsing(const CLI::App& commands, const CLI::ParseError& stopped) {
    std::ostringstream shown;
    if (commands.exit(stopped, shown, shown) == 0) return print(shown.str());
    std::fprintf(stderr, "quarn: %s\nRun with --help for more information.\n", stopped.what());
    return exit_usage;
}

exit_status run(int argument_count, char** arguments) {
    CLI::App commands("Exact reasoning with probabilistic graphical models", "quarn");
    commands.require_subcommand(1);
    commands.set_version_flag("--version", "quarn " QUARN_VERSION);
    tool::beliefs_options beliefs;
    tool::add_beliefs_command(commands, beliefs);
    try {
        commands.parse(argument_count, arguments);
    } catch (const CLI::ParseError& stopped) {
        return finish_parsing(commands, stopped);
    }
    return print(tool::run_beliefs(beliefs));
}

}  // namespace

int main(int argument_count, char** arguments) {
    try {
        return run(argument_count, arguments);
    } catch (const tool::usage_failure& failed) {
        return complain(exit_usage, failed.what());
    } catch (const std::bad_alloc&) {
        return complain(exit_failed, "out of memory");
    } catch (const std::exception& failed) {
        return complain(exit_failed, failed.what());
    }
}
