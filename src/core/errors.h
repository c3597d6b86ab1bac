// The error state of a thread, the error table, and the exception that carries a code inside the library.
#pragma once

#include <exception>

#include "quarn.h"

namespace quarn {

// Thrown where an operation fails; the boundary turns it into the thread's error code.
class failure : public std::exception {
public:
    explicit failure(q_error_t code) noexcept : code_(code) {}
    q_error_t code() const noexcept { return code_; }

private:
    q_error_t code_;
};

inline void require(bool condition, q_error_t code = q_error_usage) {
    if (!condition) throw failure(code);
}

q_error_t last_error() noexcept;
void set_error(q_error_t code) noexcept;

const char* error_name(uint32_t code) noexcept;
const char* error_description(uint32_t code) noexcept;

// The code of the exception being handled: that of a failure, out of memory for what the standard library throws when
// an allocation fails or a size is absurd, q_error_error for anything else.
q_error_t code_of_current_exception() noexcept;

}  // namespace quarn
