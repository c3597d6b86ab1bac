// Reads expressions.
#pragma once

#include "domain.h"
#include "expression.h"
#include "scanner.h"

namespace quarn {

// Reads an expression over the nodes of a domain, up to the first token that does not belong to it. Throws
// reported_failure, after reporting: with the code of the construction that was refused, else with q_error_parse or
// q_error_no_memory.
owned_expression parse_expression(scanner& in, domain& target);

// The same, but nothing may follow the expression.
owned_expression parse_whole_expression(scanner& in, domain& target);

}  // namespace quarn
