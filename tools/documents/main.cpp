// Writes what is installed beside the tool, made from the definitions of its commands: manual pages and completion.
// usage: quarn_documents DIRECTORY

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

#include "commands.h"
#include "completion.h"
#include "man_page.h"

namespace {

void write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream << text;
    stream.close();
}

void write_documents(const std::filesystem::path& directory) {
    tool::tool_commands known;
    const CLI::App& commands = known.parser();
    const std::filesystem::path pages = directory / "man1";
    std::filesystem::remove_all(pages);  // those of commands that are no more
    std::filesystem::create_directories(pages);
    write(pages / "quarn.1", tool::man_page(commands));
    for (const CLI::App* command : commands.get_subcommands({}))
        write(pages / ("quarn-" + command->get_name() + ".1"), tool::man_page(commands, *command));
    write(directory / "quarn", tool::bash_completion(commands));
}

}  // namespace

int main(int argument_count, char** arguments) {
    try {
        if (argument_count != 2) throw std::runtime_error("usage: quarn_documents DIRECTORY");
        write_documents(arguments[1]);
        return 0;
    } catch (const std::exception& failed) {
        std::fprintf(stderr, "quarn_documents: %s\n", failed.what());
        return 1;
    }
}
