// A whole network as NET text.
#pragma once

#include <string>

#include "domain.h"

namespace quarn {

// The text that is read as the same network, with numbers rounded to eight significant digits. Nodes without names get
// them. Fails with q_error_invalid_probability_potential when a number of a table is infinite or none, with
// q_error_invalid_state_values when a state value is none.
std::string write_net(domain& written);

}  // namespace quarn
