// The minimal reduction of a LIMID [Lauritzen & Nilsson 2001].
#pragma once

#include "domain.h"

namespace quarn {

// Removes every informational link that is not requisite; how many these were. A failure leaves all links in place.
std::size_t minimize_limid(domain& reduced);

}  // namespace quarn
