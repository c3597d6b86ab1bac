// Reads evidence from case files.
#pragma once

#include <string_view>

#include "domain.h"
#include "parse_reports.h"

namespace quarn {

// Makes what a text says the evidence entered in a domain. Fails after at least one message was reported, with the code
// of the operation on evidence that failed, else with q_error_parse; then there is no evidence.
void parse_case(std::string_view source, domain& observed, parse_reports& reports);

}  // namespace quarn
