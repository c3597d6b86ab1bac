// Reads networks in the NET language.
#pragma once

#include <memory>
#include <string_view>

#include "domain.h"
#include "net_lexer.h"

namespace quarn {

// Reads a whole text. Fails after at least one error was reported: with the code of the operation on nodes that failed,
// else with q_error_parse.
std::unique_ptr<domain> parse_net(std::string_view source, position_unit unit, parse_reports& reports);

}  // namespace quarn
