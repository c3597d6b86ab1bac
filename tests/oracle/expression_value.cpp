#include "expression_value.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace oracle {
namespace {

outcome error(q_error_t code) { return {code}; }
template <class Value>
outcome result(Value value) {
    return {q_error_none, value};
}

outcome finite(const outcome& made) {
    const double* const x = std::get_if<double>(&made.value);
    return x != nullptr && !(std::abs(*x) < INFINITY) ? error(q_error_computation_failed) : made;
}

// The value of an operator of numbers: y is the last one.
outcome compute(q_operator_t op, const std::vector<double>& xs) {
    double (*const functions[])(double) = {std::log,  std::log2, std::log10, std::exp,  std::sin,
                                           std::cos,  std::tan,  std::sinh,  std::cosh, std::tanh,
                                           std::sqrt, std::fabs, std::floor, std::ceil};
    const double x = xs.front(), y = xs.back();
    const bool is_logarithm = op >= q_operator_log && op <= q_operator_log10;
    const bool divides = op == q_operator_divide || op == q_operator_mod, raises = op == q_operator_power;
    if ((divides && y == 0) || (raises && x == 0 && y < 0)) return error(q_error_division_by_zero);
    if ((is_logarithm && x <= 0) || (op == q_operator_sqrt && x < 0) ||
        (raises && x < 0 && std::rint(y) != y))
        return error(q_error_inappropriate_arguments);
    if (op >= q_operator_log && op <= q_operator_ceil) return result(functions[op - q_operator_log](x));
    switch (op) {
    case q_operator_min: return result(*std::min_element(xs.begin(), xs.end()));
    case q_operator_max: return result(*std::max_element(xs.begin(), xs.end()));
    case q_operator_mod: return result(std::fmod(x, y));
    case q_operator_add: return result(x + y);
    case q_operator_subtract: return result(x - y);
    case q_operator_multiply: return result(x * y);
    case q_operator_divide: return result(x / y);
    case q_operator_power: return result(std::pow(x, y));
    case q_operator_negate: return result(0 - x);
    case q_operator_less_than: return result(x < y);
    case q_operator_greater_than: return result(y < x);
    case q_operator_less_than_or_equals: return result(!(y < x));
    default: return result(!(x < y));
    }
}

}  // namespace

outcome expression_value(q_expression_t asked, const node_meanings& nodes) {
    const q_operator_t op = q_expression_get_operator(asked);
    const auto argument = [&](std::size_t i) { return q_expression_get_arguments(asked)[i]; };
    const auto value_of = [&](std::size_t i) { return expression_value(argument(i), nodes); };
    if (op < q_operator_probability) return error(q_error_inappropriate_arguments);
    switch (op) {
    case q_operator_number: return finite(result(q_expression_get_number(asked)));
    case q_operator_label: return result(std::string(q_expression_get_label(asked)));
    case q_operator_boolean: return result(q_expression_get_boolean(asked) == 1);
    case q_operator_node: return finite(nodes.value(q_expression_get_node(asked)));
    case q_operator_state_index: return nodes.state(q_expression_get_node(argument(0)));
    case q_operator_variance: return finite(nodes.variance(q_expression_get_node(argument(0))));
    case q_operator_probability: return finite(nodes.probability(argument(0)));
    case q_operator_quantile: {
        const outcome level = value_of(1);
        if (level.code != q_error_none) return level;
        const double p = std::get<double>(level.value);
        if (p < 0 || p > 1) return error(q_error_inappropriate_arguments);
        return finite(nodes.quantile(q_expression_get_node(argument(0)), p));
    }
    case q_operator_if: {
        const outcome chosen = value_of(0);
        return chosen.code != q_error_none ? chosen : value_of(std::get<bool>(chosen.value) ? 1 : 2);
    }
    default: break;
    }
    std::vector<outcome> values;
    for (std::size_t i = 0; argument(i) != nullptr; ++i) {
        values.push_back(value_of(i));
        if (values.back().code != q_error_none) return values.back();
        if (op != q_operator_and && op != q_operator_or) continue;
        if (std::get<bool>(values.back().value) == (op == q_operator_or)) return values.back();
    }
    switch (op) {
    case q_operator_and: return result(true);
    case q_operator_or: return result(false);
    case q_operator_not: return result(!std::get<bool>(values[0].value));
    case q_operator_equals: return result(values[0] == values[1]);
    case q_operator_not_equals: return result(!(values[0] == values[1]));
    default: break;
    }
    std::vector<double> numbers;
    for (const outcome& x : values) numbers.push_back(std::get<double>(x.value));
    return finite(compute(op, numbers));
}

}  // namespace oracle
