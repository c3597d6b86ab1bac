#include "arithmetic.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace quarn {
namespace {

double positive(double x) {
    require(x > 0, q_error_inappropriate_arguments);
    return x;
}

double not_negative(double x) {
    require(x >= 0, q_error_inappropriate_arguments);
    return x;
}

double not_zero(double x) {
    require(x != 0, q_error_division_by_zero);
    return x;
}

double power(double base, double exponent) {
    require(base != 0 || exponent >= 0, q_error_division_by_zero);
    require(base >= 0 || exponent == std::trunc(exponent), q_error_inappropriate_arguments);
    return std::pow(base, exponent);
}

bool are_equal(const value& a, const value& b) {
    if (const auto* const label = std::get_if<const char*>(&a))
        return std::strcmp(*label, as<const char*>(b)) == 0;
    require(a.index() == b.index(), q_error_inappropriate_arguments);
    return a == b;
}

template <class Better>
double best(std::span<const value> arguments, Better is_better) {
    double found = as<double>(arguments[0]);
    for (const value& argument : arguments.subspan(1))
        if (const double x = as<double>(argument); is_better(x, found)) found = x;
    return found;
}

value apply_to_one(q_operator_t op, double x) {
    switch (op) {
    case q_operator_log: return std::log(positive(x));
    case q_operator_log2: return std::log2(positive(x));
    case q_operator_log10: return std::log10(positive(x));
    case q_operator_exp: return std::exp(x);
    case q_operator_sin: return std::sin(x);
    case q_operator_cos: return std::cos(x);
    case q_operator_tan: return std::tan(x);
    case q_operator_sinh: return std::sinh(x);
    case q_operator_cosh: return std::cosh(x);
    case q_operator_tanh: return std::tanh(x);
    case q_operator_sqrt: return std::sqrt(not_negative(x));
    case q_operator_abs: return std::abs(x);
    case q_operator_floor: return std::floor(x);
    case q_operator_ceil: return std::ceil(x);
    default: return -x;
    }
}

value apply_to_two(q_operator_t op, double x, double y) {
    switch (op) {
    case q_operator_mod: return std::fmod(x, not_zero(y));
    case q_operator_add: return x + y;
    case q_operator_subtract: return x - y;
    case q_operator_multiply: return x * y;
    case q_operator_divide: return x / not_zero(y);
    case q_operator_power: return power(x, y);
    case q_operator_less_than: return x < y;
    case q_operator_greater_than: return x > y;
    case q_operator_less_than_or_equals: return x <= y;
    default: return x >= y;
    }
}

}  // namespace

value apply(q_operator_t op, std::span<const value> arguments) {
    switch (op) {
    case q_operator_min: return best(arguments, std::less());
    case q_operator_max: return best(arguments, std::greater());
    case q_operator_not: return !as<bool>(arguments[0]);
    case q_operator_equals: return are_equal(arguments[0], arguments[1]);
    case q_operator_not_equals: return !are_equal(arguments[0], arguments[1]);
    default: break;
    }
    const double first = as<double>(arguments[0]);
    return arguments.size() == 1 ? apply_to_one(op, first)
                                 : apply_to_two(op, first, as<double>(arguments[1]));
}

}  // namespace quarn
