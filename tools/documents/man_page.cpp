#include "man_page.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <vector>

#include <CLI/CLI.hpp>

#include "arguments.h"

namespace tool {
namespace {

std::string escaped(std::string_view text) {
    std::string roff;
    for (const char c : text) {
        switch (c) {
        case '\\': roff += "\\e"; break;
        case '-': roff += "\\-"; break;
        case '\'': roff += "\\(aq"; break;
        case '`': roff += "\\(ga"; break;
        case '^': roff += "\\(ha"; break;
        case '~': roff += "\\(ti"; break;
        default: roff += c;
        }
    }
    return roff.starts_with('.') ? "\\&" + roff : roff;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

std::string in_capitals(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string begin_page(const std::string& name, const std::string& version, const std::string& description) {
    return ".TH " + in_capitals(escaped(name)) + " 1 \"\" \"" + escaped(version) +
           "\" \"User Commands\"\n.SH NAME\n" + escaped(name) + " \\- " + escaped(description) + "\n";
}

// What a user writes after the name of an option; empty for flags.
std::string argument_of(const CLI::Option& option) {
    if (option.get_type_size() == 0) return "";
    return option.get_option_text().empty() ? option.get_type_name() : option.get_option_text();
}

std::string names_in_roff(const CLI::Option& option) {
    if (option.get_positional()) return bold(option.get_name());
    std::string names;
    const auto add = [&](const std::string& name) { names += (names.empty() ? "" : ", ") + bold(name); };
    for (const std::string& name : option.get_snames()) add("-" + name);
    for (const std::string& name : option.get_lnames()) add("--" + name);
    return names;
}

std::string argument_in_roff(const CLI::Option& option) {
    const std::string argument = argument_of(option);
    return argument.empty() ? "" : " " + italic(argument);
}

std::string options_section(const CLI::App& command) {
    constexpr std::string_view pointer = ", see below";
    std::string text = ".SH OPTIONS\n";
    std::vector<const CLI::Option*> options = command.get_options({});
    std::stable_partition(options.begin(), options.end(),
                          [](const CLI::Option* option) { return option->get_positional(); });
    for (const CLI::Option* option : options) {
        std::string description = option->get_description();
        if (const size_t place = description.find(pointer); place != std::string::npos)
            description.replace(place, pointer.size(), ", see above");
        text +=
            ".TP\n" + names_in_roff(*option) + (option->get_positional() ? "" : argument_in_roff(*option));
        text += "\n" + escaped(description) + ".\n";
    }
    return text;
}

std::string synopsis_section(const CLI::App& command) {
    std::string text = ".SH SYNOPSIS\n" + bold("quarn " + command.get_name());
    std::string required, rest;
    for (const CLI::Option* option : command.get_options({})) {
        if (option->get_positional())
            rest += " " + italic(option->get_name());
        else if (option->get_required())
            required += " " + names_in_roff(*option) + argument_in_roff(*option);
    }
    return text + rest + required + " [" + italic("OPTION") + "]...\n";
}

struct section {
    std::string heading;  // without the colon; empty: what comes before the first
    std::vector<std::string> lines{};
};

std::vector<section> cut(const std::string& explanations) {
    std::vector<section> sections = {{""}};
    std::istringstream stream(explanations);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with(':') && !line.starts_with(' '))
            sections.push_back({line.substr(0, line.size() - 1)});
        else
            sections.back().lines.push_back(line);
    }
    return sections;
}

// Where the text begins in "  WORD  text"; 0 for another line.
size_t text_of_entry(const std::string& line) {
    const size_t word = line.find_first_not_of(' ');
    if (word == 0 || word == std::string::npos) return 0;
    const size_t gap = line.find("  ", word);
    return gap == std::string::npos ? 0 : line.find_first_not_of(' ', gap);
}

// Within a paragraph, "  --option: ..." and "  FILE: ..." begin a new one.
bool begins_paragraph(std::string_view line) {
    if (!line.starts_with("  ")) return false;
    const std::string_view word = line.substr(2, line.find(' ', 2) - 2);
    const auto is_capital = [](char c) { return c == ':' || (c >= 'A' && c <= 'Z'); };
    return word.starts_with("--") || (word.ends_with(':') && std::ranges::all_of(word, is_capital));
}

std::string without_indentation(const std::string& line) {
    return line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

std::string entry_of(const std::string& line) {
    const std::string words = without_indentation(line);
    return words.substr(0, words.find("  "));
}

std::string filled(const std::vector<std::string>& lines) {
    std::string text;
    bool is_in_list = false, is_new = true;
    for (const std::string& line : lines) {
        const size_t entry = text_of_entry(line);
        if (line.empty()) {
            is_new = true;
        } else if (entry > 0) {
            text += ".TP\n" + bold(entry_of(line)) + "\n" + escaped(line.substr(entry)) + "\n";
            is_in_list = true;
            is_new = false;
        } else {
            if (is_new || begins_paragraph(line) || (is_in_list && !line.starts_with("   "))) {
                text += ".PP\n";
                is_in_list = false;
            }
            text += escaped(without_indentation(line)) + "\n";
            is_new = false;
        }
    }
    return text;
}

std::string as_they_stand(const std::vector<std::string>& lines) {
    std::string text = ".PP\n.nf\n";
    for (const std::string& line : lines)
        if (!line.empty()) text += escaped(line.substr(std::min<size_t>(2, line.size()))) + "\n";
    return text + ".fi\n";
}

bool is_of_examples(const section& shown) { return shown.heading.starts_with("Example"); }
bool is_of_exit_status(const section& shown) { return shown.heading == "Exit status"; }

std::string description_section(const CLI::App& command, const std::vector<section>& explanations) {
    std::string text = ".SH DESCRIPTION\n" + escaped(command.get_description()) + ".\n";
    for (const section& shown : explanations) {
        if (is_of_examples(shown) || is_of_exit_status(shown)) continue;
        if (!shown.heading.empty()) text += ".SS " + escaped(shown.heading) + "\n";
        text += filled(shown.lines);
    }
    return text;
}

std::string see_also(const CLI::App& commands, const CLI::App* without) {
    std::string text = ".SH SEE ALSO\n";
    std::vector<std::string> names = {"quarn"};
    for (const CLI::App* command : commands.get_subcommands({}))
        names.push_back("quarn-" + command->get_name());
    std::erase(names, without == nullptr ? "quarn" : "quarn-" + without->get_name());
    for (const std::string& name : names)
        text += ".BR " + escaped(name) + (name == names.back() ? " (1)\n" : " (1),\n");
    return text;
}

}  // namespace

std::string man_page(const CLI::App& commands) {
    std::string text = begin_page("quarn", commands.version(), commands.get_description());
    text += ".SH SYNOPSIS\n" + bold("quarn") + " " + italic("COMMAND") + " [" + italic("ARGUMENT") +
            "]...\n.br\n" + bold("quarn help") + " [" + italic("COMMAND") + "]\n";
    text += ".SH DESCRIPTION\n" + escaped(commands.get_description()) + ".\n";
    std::string group;
    for (const CLI::App* command : commands.get_subcommands({})) {
        if (command->get_group() != group) text += ".SS " + escaped(group = command->get_group()) + "\n";
        text += ".TP\n\\fBquarn\\-" + escaped(command->get_name()) + "\\fR(1)\n" +
                escaped(command->get_description()) + ".\n";
    }
    text += options_section(commands);
    text += ".SH EXIT STATUS\n.TP\n.B 0\nDone.\n.TP\n.B 1\nFailed, or something was found.\n"
            ".TP\n.B 2\nThe command line is wrong.\n";
    return text + see_also(commands, nullptr);
}

std::string man_page(const CLI::App& commands, const CLI::App& command) {
    const std::vector<section> explanations = cut(command.get_footer());
    std::string text =
        begin_page("quarn-" + command.get_name(), commands.version(), command.get_description());
    text += synopsis_section(command) + description_section(command, explanations) + options_section(command);
    for (const section& shown : explanations)
        if (is_of_exit_status(shown)) text += ".SH EXIT STATUS\n" + filled(shown.lines);
    for (const section& shown : explanations)
        if (is_of_examples(shown)) text += ".SH EXAMPLES\n" + as_they_stand(shown.lines);
    return text + see_also(commands, &command);
}

}  // namespace tool
