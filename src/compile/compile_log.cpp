#include "compile_log.h"

#include <array>
#include <cstring>
#include <ctime>

#include "sizes.h"

namespace quarn {
namespace {

constexpr std::size_t line_width = 80;

const char* plural_ending(std::size_t count) noexcept { return count == 1 ? "" : "s"; }

// Names separated by commas on lines that begin with four blanks; a comma may still follow the last name of a line.
void log_nodes(log_file& log, std::span<node* const> nodes) {
    std::size_t column = 0;
    for (node* listed : nodes) {
        const char* const name = node_name(*listed);
        const std::size_t length = std::strlen(name);
        if (column > 0 && column + 2 + length < line_width) {
            log.print(", %s", name);
            column += 2 + length;
        } else {
            log.print("%s    %s", column > 0 ? ",\n" : "", name);
            column = 4 + length;
        }
    }
    log.print("\n");
}

void log_clique(log_file& log, const clique& made) {
    const std::size_t count = made.members.size();
    log.print("\nClique %s, %s member%s, table size = %s:\n", format_size(made.number).data(),
              format_size(count).data(), plural_ending(count), format_size(made.size).data());
    log_nodes(log, made.members);
}

}  // namespace

void log_time(log_file& log) {
    const std::time_t now = std::time(nullptr);
    std::array<char, 26> written{};
    log.print("%s", ctime_r(&now, written.data()));
}

void log_cliques(log_file& log, std::span<const std::unique_ptr<clique>> cliques) {
    if (!log.is_set()) return;
    log.print("\n\nCliques:\n");
    std::size_t total = 0;
    for (const auto& made : cliques) {
        log_clique(log, *made);
        total = saturating_sum(total, made->size);
    }
    log.print("\nTotal clique table size: %s\n", format_size(total).data());
}

void log_root(log_file& log, const clique& root) {
    log.print("\nCreating junction tree with clique %s as root ...\n", format_size(root.number).data());
}

void log_separator(log_file& log, const separator& made) {
    if (!log.is_set()) return;
    const std::size_t count = made.members.size();
    log.print("\nCliques %s and %s linked, separator has %s member%s and table size = %s:\n",
              format_size(made.child->number).data(), format_size(made.parent->number).data(),
              format_size(count).data(), plural_ending(count), format_size(made.size).data());
    log_nodes(log, made.members);
}

}  // namespace quarn
