// Lists of nodes in the log.
#pragma once

#include <span>

#include "log_file.h"
#include "node.h"

namespace quarn {

// Names separated by commas on lines that begin with four blanks; a comma may still follow the last name of a line.
void log_nodes(log_file& log, std::span<node* const> nodes);

}  // namespace quarn
