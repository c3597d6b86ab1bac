// Writes evidence as a case file.
#pragma once

#include <string>

#include "domain.h"

namespace quarn {

// The evidence entered on the nodes of a domain, from the newest to the oldest. Nodes without a name get one.
std::string case_text(const domain& written);

}  // namespace quarn
