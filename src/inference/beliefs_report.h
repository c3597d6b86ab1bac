// The results of a propagation as a text in the log.
#pragma once

#include "domain.h"

namespace quarn {

// Nothing without a log. Fails with q_error_not_compiled, q_error_no_equilibrium, q_error_locale or q_error_io.
void print_beliefs(domain& reported);

}  // namespace quarn
