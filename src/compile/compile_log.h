// The trace of a compilation in the log of its domain.
#pragma once

#include <memory>
#include <span>

#include "junction_forest.h"

namespace quarn {

void log_time(log_file& log);
void log_cliques(log_file& log, std::span<const std::unique_ptr<clique>> cliques);
void log_root(log_file& log, const clique& root);
void log_separator(log_file& log, const separator& made);
void log_missing_table(log_file& log, node& checked);
void log_assignment(log_file& log, node& assigned, const clique& home);
void log_assignment(log_file& log, const chain_component& assigned, const clique& home_of_parents);
void log_assignment(log_file& log, const table& potential, const clique& home);

}  // namespace quarn
