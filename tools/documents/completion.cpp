#include "completion.h"

#include <vector>

#include <CLI/CLI.hpp>

#include "arguments.h"

namespace tool {
namespace {

// `-` alone is a file: standard input or output. Bash takes --mode=VALUE for three words.
constexpr const char* beginning = R"(# Completion of quarn for bash

# What begins like the last word: of these words, of files whose names end so.
_quarn_words()
{
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word")
}

_quarn_files()
{
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <([[ -z $1 ]] || compgen -d -- "$word"; compgen -f -X "!*$1" -- "$word")
}

_quarn()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command= model= options= i
    COMPREPLY=()
    if [[ $word == = ]]; then
        word=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        -) [[ -z $command ]] || model=yes ;;
        -*) ;;
        *.net) model=yes ;;
        *) [[ $command && $command != help ]] || command=${COMP_WORDS[i]} ;;
        esac
    done
    case $command in
)";

constexpr const char* end = R"(    *) return ;;
    esac
    if [[ $word == -* ]]; then
        _quarn_words "$options"
    elif [[ $model ]]; then
        _quarn_files
    else
        _quarn_files .net
    fi
}

complete -F _quarn quarn
)";

std::vector<std::string> names_of(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

std::string option_names(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options({}))
        for (const std::string& name : names_of(*option)) names.push_back(name);
    return joined(names, " ");
}

// What may follow an option.
std::string propose_argument(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::vector<std::string> words = words_of(type);
    if (!words.empty()) return "_quarn_words '" + joined(words, " ") + "'; return";
    return type == "FILE" ? "_quarn_files; return" : "return";
}

std::string branch_of(const CLI::App& command) {
    std::string text = "    " + command.get_name() + ")\n        options='" + option_names(command) + "'\n";
    text += "        case $previous in\n";
    for (const CLI::Option* option : command.get_options({}))
        if (option->nonpositional() && option->get_items_expected_max() > 0)
            text +=
                "        " + joined(names_of(*option), " | ") + ") " + propose_argument(*option) + " ;;\n";
    return text + "        esac\n        ;;\n";
}

}  // namespace

std::string bash_completion(const CLI::App& commands) {
    std::vector<std::string> names;
    for (const CLI::App* command : commands.get_subcommands({})) names.push_back(command->get_name());
    std::string text = beginning;
    text += "    '' | help)\n        _quarn_words '" + joined(names, " ") + "'\n";
    text += "        [[ $command ]] || COMPREPLY+=($(compgen -W 'help " + option_names(commands) +
            "' -- \"$word\"))\n";
    text += "        return\n        ;;\n";
    for (const CLI::App* command : commands.get_subcommands({})) text += branch_of(*command);
    return text + end;
}

}  // namespace tool
