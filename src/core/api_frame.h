// The frame of every public function: the only place where C++ failures become error codes.
//
// A call first sets the thread's error from its handles, then runs its body; an exception becomes the error code after
// everything has been unwound, so that no clean-up can hide the first code.
#pragma once

#include <algorithm>
#include <initializer_list>

#include "errors.h"

namespace quarn {

constexpr size_t no_size = static_cast<size_t>(-1);
constexpr q_boolean_t no_answer = static_cast<q_boolean_t>(-1);

template <class Result, class Body>
Result api_call(Result failed, std::initializer_list<const void*> required, Body&& body) noexcept {
    set_error(std::ranges::count(required, nullptr) > 0 ? q_error_usage : q_error_none);
    if (last_error() != q_error_none) return failed;
    try {
        const Result result = body();
        set_error(q_error_none);  // a callback of the caller's may have made calls that failed
        return result;
    } catch (...) {
        set_error(code_of_current_exception());
    }
    return failed;
}

// For functions whose result is the error code itself.
template <class Body>
q_status_t api_status(std::initializer_list<const void*> required, Body&& body) noexcept {
    return api_call<q_status_t>(-1, required,
                                [&] {
                                    body();
                                    return q_status_t{q_error_none};
                                }) == q_error_none
               ? q_error_none
               : last_error();
}

template <class Body>
q_boolean_t api_predicate(std::initializer_list<const void*> required, Body&& body) noexcept {
    return api_call<q_boolean_t>(no_answer, required, [&] { return q_boolean_t{body() ? 1u : 0u}; });
}

}  // namespace quarn
