// The command-line tool. Exit status: 0 done, 1 failed, 2 wrong command line.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "nearest.h"
#include "terminal.h"
#include "tool_failure.h"

namespace {

using namespace tool;

exit_status complain(exit_status status, const char* message) {
    if (*message != '\0') report(std::string("quarn: ") + message);
    if (status == exit_usage) report("Run with --help for more information.");
    return status;
}

// Help and version are thrown by the command-line parser too.
exit_status finish_parsing(const CLI::App& commands, const CLI::ParseError& stopped) {
    std::ostringstream shown;
    if (commands.exit(stopped, shown, shown) != 0) return complain(exit_usage, stopped.what());
    print(shown.str());
    return exit_done;
}

// `help` and `help COMMAND` are other ways to write --help.
std::vector<std::string> read_words(int argument_count, char** arguments) {
    std::vector<std::string> words(arguments + std::min(1, argument_count), arguments + argument_count);
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    return words;
}

// The parser would say of an unknown command that a command is missing.
void require_known_command(const CLI::App& commands, const std::vector<std::string>& words) {
    const auto command =
        std::ranges::find_if(words, [](const std::string& word) { return !word.starts_with('-'); });
    if (command == words.end()) return;
    std::vector<std::string> names;
    for (const CLI::App* known : commands.get_subcommands({})) names.push_back(known->get_name());
    if (std::ranges::find(names, *command) == names.end())
        throw usage_failure("unknown command " + *command + did_you_mean(*command, names));
}

exit_status run(int argument_count, char** arguments) {
    tool_commands known;
    CLI::App& commands = known.parser();
    std::vector<std::string> words = read_words(argument_count, arguments);
    require_known_command(commands, words);
    std::ranges::reverse(words);  // as the parser wants them
    try {
        commands.parse(std::move(words));
    } catch (const CLI::ParseError& stopped) {
        return finish_parsing(commands, stopped);
    }
    return known.run_parsed();
}

}  // namespace

int main(int argument_count, char** arguments) {
    try {
        return run(argument_count, arguments);
    } catch (const usage_failure& failed) {
        return complain(exit_usage, failed.what());
    } catch (const std::bad_alloc&) {
        std::fputs("quarn: out of memory\n", stderr);
        return exit_failed;
    } catch (const std::exception& failed) {
        return complain(exit_failed, failed.what());
    }
}
