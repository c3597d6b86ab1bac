// The command-line tool. Exit status: 0 done, 1 failed, 2 wrong command line.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "beliefs_command.h"
#include "case_command.h"
#include "check_command.h"
#include "compile_command.h"
#include "convert_command.h"
#include "dsep_command.h"
#include "sample_command.h"
#include "solve_command.h"
#include "terminal.h"
#include "tool_failure.h"

namespace {

enum exit_status { exit_done = 0, exit_failed = 1, exit_usage = 2 };

exit_status complain(exit_status status, const char* message) {
    if (*message != '\0') tool::report(std::string("quarn: ") + message);
    if (status == exit_usage) tool::report("Run with --help for more information.");
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
    return complain(exit_usage, stopped.what());
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
    const auto is_meant = [&](const CLI::App* known) { return known->get_name() == *command; };
    if (commands.get_subcommands(is_meant).empty())
        throw tool::usage_failure(std::string("unknown command ") + *command);
}

// What was found is printed, and makes the command fail.
exit_status print_findings(const std::string& found) {
    const exit_status printed = print(found);
    return found.empty() ? printed : exit_failed;
}

exit_status sample(const tool::sample_options& options) {
    tool::run_sample(options);
    return exit_done;
}

// The commands of the tool, each with its options and what it does.
class tool_commands {
public:
    explicit tool_commands(CLI::App& commands) : commands_(commands) {}

    template <class Options>
    void add(void (*add_command)(CLI::App&, Options&), exit_status (*run)(const Options&)) {
        add_with(add_command, [run](const Options& options) { return run(options); });
    }
    // One that makes a text.
    template <class Options>
    void add(void (*add_command)(CLI::App&, Options&), std::string (*run)(const Options&),
             exit_status (*finish)(const std::string&) = print) {
        add_with(add_command, [=](const Options& options) { return finish(run(options)); });
    }

    exit_status run_parsed() const {
        const std::vector<CLI::App*> parsed = commands_.get_subcommands();
        if (parsed.empty()) throw tool::usage_failure("no command is given");
        return runs_.at(parsed.front()->get_name())();
    }

private:
    template <class Options, class Run>
    void add_with(void (*add_command)(CLI::App&, Options&), const Run& run) {
        auto options = std::make_shared<Options>();
        add_command(commands_, *options);
        const auto any = [](const CLI::App*) { return true; };
        runs_[commands_.get_subcommands(any).back()->get_name()] = [=] { return run(*options); };
    }

    CLI::App& commands_;
    std::map<std::string, std::function<exit_status()>> runs_;
};

exit_status run(int argument_count, char** arguments) {
    CLI::App commands("Exact reasoning with probabilistic graphical models", "quarn");
    commands.get_formatter()->label("SUBCOMMAND", "COMMAND");
    commands.require_subcommand(0, 1);
    commands.footer("Run quarn COMMAND --help for what a command takes.");
    commands.set_version_flag("--version", "quarn " QUARN_VERSION);
    tool_commands known(commands);
    known.add(tool::add_beliefs_command, tool::run_beliefs);
    known.add(tool::add_compile_command, tool::run_compile);
    known.add(tool::add_dsep_command, tool::run_dsep);
    known.add(tool::add_solve_command, tool::run_solve);
    known.add(tool::add_sample_command, sample);
    known.add(tool::add_check_command, tool::run_check, print_findings);
    known.add(tool::add_convert_command, tool::run_convert);
    known.add(tool::add_case_command, tool::run_case);
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
    } catch (const tool::usage_failure& failed) {
        return complain(exit_usage, failed.what());
    } catch (const std::bad_alloc&) {
        std::fputs("quarn: out of memory\n", stderr);
        return exit_failed;
    } catch (const std::exception& failed) {
        return complain(exit_failed, failed.what());
    }
}
