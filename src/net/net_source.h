// Where a network comes from: text in memory or a file.
#pragma once

#include <memory>

#include "domain.h"
#include "parse_reports.h"

namespace quarn {

// Reads the network that a source is or names. Fails as parse_net(), or with q_error_io when a file cannot be read.
std::unique_ptr<domain> read_net(const char* source, parse_reports& reports);

}  // namespace quarn
