#include "compile_log.h"

#include <array>
#include <ctime>

#include "chain_component.h"
#include "log_nodes.h"
#include "sizes.h"

namespace quarn {
namespace {

const char* plural_ending(std::size_t count) noexcept { return count == 1 ? "" : "s"; }

void log_size(log_file& log, std::size_t discrete, std::size_t continuous) {
    log.print("%s", format_size(discrete).data());
    if (continuous > 0) log.print(" + %s", format_size(continuous).data());
}

void log_size(log_file& log, const table_size& size) {
    log_size(log, size.configurations, size.continuous_part());
}

void log_clique(log_file& log, const clique& made) {
    const std::size_t count = made.members.size();
    log.print("\nClique %s, %s member%s, table size = ", format_size(made.number).data(),
              format_size(count).data(), plural_ending(count));
    log_size(log, made.size);
    log.print(":\n");
    log_nodes(log, made.members);
}

// All on one line.
void log_names(log_file& log, const handle_list<node>& nodes) {
    for (node* listed : nodes) log.print("%s%s", listed == nodes[0] ? "" : ", ", node_name(*listed));
}

}  // namespace

void log_time(log_file& log) {
    const std::time_t now = std::time(nullptr);
    std::array<char, 26> written{};
    if (ctime_r(&now, written.data()) != nullptr) log.print("%s", written.data());
}

void log_assignment(log_file& log, node& assigned, const clique& home) {
    if (log.is_set())
        log.print("    Node %s assigned to clique %s\n", node_name(assigned),
                  format_size(home.number).data());
}

void log_assignment(log_file& log, const chain_component& assigned, const clique& home_of_parents) {
    if (!log.is_set()) return;
    log.print("    Chain graph component (");
    log_names(log, assigned.members);
    log.print("):\n\tParents assigned to clique %s\n", format_size(home_of_parents.number).data());
}

void log_assignment(log_file& log, const table& potential, const clique& home) {
    if (!log.is_set()) return;
    log.print("    Potential (");
    log_names(log, potential.nodes);
    log.print(") assigned to clique %s\n", format_size(home.number).data());
}

void log_missing_table(log_file& log, node& checked) {
    if (log.is_set()) log.print("    Warning: Node `%s' has no table\n", node_name(checked));
}

void log_cliques(log_file& log, std::span<const std::unique_ptr<clique>> cliques) {
    if (!log.is_set()) return;
    log.print("\n\nCliques:\n");
    std::size_t discrete = 0, continuous = 0;
    for (const auto& made : cliques) {
        log_clique(log, *made);
        discrete = saturating_sum(discrete, made->size.configurations);
        continuous = saturating_sum(continuous, made->size.continuous_part());
    }
    log.print("\nTotal clique table size: ");
    log_size(log, discrete, continuous);
    log.print("\n");
}

void log_root(log_file& log, const clique& root) {
    log.print("\nCreating junction tree with clique %s as root ...\n", format_size(root.number).data());
}

void log_separator(log_file& log, const separator& made) {
    if (!log.is_set()) return;
    const std::size_t count = made.members.size();
    log.print("\nCliques %s and %s linked, separator has %s member%s and table size = ",
              format_size(made.child->number).data(), format_size(made.parent->number).data(),
              format_size(count).data(), plural_ending(count));
    log_size(log, made.size);
    if (count == 0) return;
    log.print(":\n");
    log_nodes(log, made.members);
}

}  // namespace quarn
