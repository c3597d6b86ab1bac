// Evaluation of expressions.
#pragma once

#include <variant>

#include "expression.h"
#include "node.h"

namespace quarn {

// The value of an expression. A label belongs to the expression or to a node that it refers to.
using value = std::variant<double, bool, const char*>;

// What is known of the nodes that an expression refers to. Everything may fail, with q_error_computation_failed where
// there is no such value.
class node_values {
public:
    virtual ~node_values() = default;
    virtual value value_of(const node& referred) const = 0;  // as type_of(referred) says
    virtual std::size_t state_of(const node& discrete) const = 0;
    virtual double variance_of(const node& numeric) const = 0;
    virtual double quantile_of(const node& numeric, double level) const = 0;
    virtual double probability_of(const expression& condition) const = 0;
};

// What a discrete node stands for in one of its states: label, truth, value, or the middle of an interval. Fails with
// q_error_invalid_state_values.
value value_in_state(const node& discrete, std::size_t state);

// The value of an expression that is no distribution. All numbers on the way are finite, else
// q_error_computation_failed. Fails also with q_error_division_by_zero, q_error_inappropriate_arguments (outside the
// domain of a function, or of another type than when the expression was made), and as node_values does.
value evaluate(const expression& tree, const node_values& values);

// One of another type is q_error_inappropriate_arguments.
double evaluate_number(const expression& tree, const node_values& values);
bool evaluate_boolean(const expression& tree, const node_values& values);
// The state of a node that the value selects: its label, truth, value or interval; q_error_computation_failed where it
// selects none.
std::size_t evaluate_state(const expression& tree, const node& of, const node_values& values);

}  // namespace quarn
