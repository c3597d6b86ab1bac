// The clean-up callbacks that callers register with domains and nodes.
#pragma once

namespace quarn {

// Runs the callback, if there is one, while the object can still be read.
template <class Object>
void run_cleanup(Object& deleted) noexcept {
    if (deleted.user_data_cleanup == nullptr) return;
    try {
        deleted.user_data_cleanup(&deleted);
    } catch (...) {  // deletion goes on, whatever a callback written in C++ may throw
    }
}

}  // namespace quarn
