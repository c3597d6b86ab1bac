// The "C" locale for the time that text is parsed or printed, whatever the host has set.
#pragma once

#include "allocation.h"

namespace quarn {

// Switches the process to the "C" locale and back. Costs nothing when it is set already: nothing is switched then.
// Fails with q_error_locale.
class c_locale_scope {
public:
    c_locale_scope();
    ~c_locale_scope();
    c_locale_scope(const c_locale_scope&) = delete;
    c_locale_scope& operator=(const c_locale_scope&) = delete;

private:
    text saved_;  // null: nothing to restore
};

}  // namespace quarn
