// What the operators of expressions make of the values of their arguments.
#pragma once

#include <span>

#include "errors.h"
#include "evaluation.h"

namespace quarn {

// A value that must be of this type, else q_error_inappropriate_arguments.
template <class T>
T as(const value& given) {
    const T* const held = std::get_if<T>(&given);
    require(held != nullptr, q_error_inappropriate_arguments);
    return *held;
}

// The result of an operator that takes the values of all its arguments: neither a distribution, nor one of those that
// ask for nodes or evaluate some arguments only. Numbers may be infinite, else they are right or it fails with
// q_error_division_by_zero or q_error_inappropriate_arguments.
value apply(q_operator_t op, std::span<const value> arguments);

}  // namespace quarn
