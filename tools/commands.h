// The commands of the tool, each with its options and what it does.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <CLI/App.hpp>

namespace tool {

enum exit_status { exit_done = 0, exit_failed = 1, exit_usage = 2 };

// Writes to standard output; fails where that cannot be done.
void print(std::string_view text);

class tool_commands {
public:
    tool_commands();

    CLI::App& parser() noexcept { return parser_; }
    exit_status run_parsed() const;

private:
    template <class Options>
    using adder = void (*)(CLI::App&, Options&);

    // The commands that are added next stand under this heading.
    void begin_group(const char* heading) { heading_ = heading; }
    template <class Options>
    void add(adder<Options> add_command, void (*run)(const Options&));
    // One that makes a text, and one whose text tells what is wrong.
    template <class Options>
    void add(adder<Options> add_command, std::string (*run)(const Options&));
    template <class Options>
    void add_finding(adder<Options> add_command, std::string (*run)(const Options&));
    template <class Options, class Run>
    void add_with(adder<Options> add_command, const Run& run);

    CLI::App parser_;
    std::map<std::string, std::function<exit_status()>> runs_;
    std::string heading_;
};

}  // namespace tool
