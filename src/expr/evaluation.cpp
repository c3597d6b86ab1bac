#include "evaluation.h"

#include <cmath>
#include <vector>

#include "arithmetic.h"
#include "errors.h"
#include "expression_types.h"
#include "state_numbers.h"
#include "states.h"

namespace quarn {
namespace {

value checked(const value& made) {
    const double* const number = std::get_if<double>(&made);
    require(number == nullptr || std::isfinite(*number), q_error_computation_failed);
    return made;
}

// The node that an operator asks for; its subtype may have changed.
const node& numeric_argument(const expression& of) {
    const node& asked = *of.arguments[0]->node;
    require(type_of(asked) == value_type::number, q_error_inappropriate_arguments);
    return asked;
}

double quantile(const expression& of, double level, const node_values& values) {
    require(level >= 0 && level <= 1, q_error_inappropriate_arguments);
    return values.quantile_of(numeric_argument(of), level);
}

bool is_distribution(q_operator_t op) noexcept {
    return is_operator(op) && row_of(op).gives == value_type::distribution;
}

// The argument to evaluate before any other one; null where it takes none to know the value.
const expression* first_argument(const expression& of) noexcept {
    switch (of.op) {
    case q_operator_quantile: return of.arguments[1];
    case q_operator_probability:
    case q_operator_variance:
    case q_operator_state_index: return nullptr;
    default: return is_distribution(of.op) ? nullptr : of.arguments.array()[0];
    }
}

value value_without_arguments(const expression& of, const node_values& values) {
    switch (of.op) {
    case q_operator_number: return of.number;
    case q_operator_label: return of.label.get();
    case q_operator_boolean: return of.flag;
    case q_operator_node: return values.value_of(*of.node);
    case q_operator_probability: return values.probability_of(*of.arguments[0]);
    case q_operator_variance: return values.variance_of(numeric_argument(of));
    case q_operator_state_index: return static_cast<double>(values.state_of(*of.arguments[0]->node));
    case q_operator_and: return true;
    case q_operator_or: return false;
    default: throw failure(q_error_inappropriate_arguments);
    }
}

// Whether the value of an operator is that of its last argument evaluated, which the values before have chosen.
bool selects(q_operator_t op) noexcept {
    return op == q_operator_if || op == q_operator_and || op == q_operator_or;
}

// The argument to evaluate after one; null when the value is known now.
const expression* next_argument(const expression& after, const value& evaluated) {
    const auto& arguments = after.parent->arguments;
    const expression* const next = arguments.array()[after.place + 1];
    switch (after.parent->op) {
    case q_operator_if: return after.place > 0 ? nullptr : arguments[as<bool>(evaluated) ? 1 : 2];
    case q_operator_and: return as<bool>(evaluated) ? next : nullptr;
    case q_operator_or: return as<bool>(evaluated) ? nullptr : next;
    default: return next;
    }
}

}  // namespace

value evaluate(const expression& tree, const node_values& values) {
    std::vector<value> stack;  // of the arguments so far of each operator above
    stack.reserve(16);
    const expression* at = &tree;
    const auto descend = [&] {
        while (const expression* const first = first_argument(*at)) at = first;
        stack.push_back(checked(value_without_arguments(*at, values)));
    };
    const auto ascend = [&] {
        at = at->parent;
        if (selects(at->op)) return;
        const std::size_t count = at->op == q_operator_quantile ? 1 : at->arguments.size();
        const std::span<const value> arguments = std::span(stack).last(count);
        const value made = at->op == q_operator_quantile ? quantile(*at, as<double>(arguments[0]), values)
                                                         : apply(at->op, arguments);
        stack.resize(stack.size() - count + 1);
        stack.back() = checked(made);
    };
    for (descend(); at != &tree;) {
        if (const expression* const next = next_argument(*at, stack.back())) {
            if (selects(at->parent->op)) stack.pop_back();
            at = next;
            descend();
        } else {
            ascend();
        }
    }
    return stack.back();
}

double evaluate_number(const expression& tree, const node_values& values) {
    return as<double>(evaluate(tree, values));
}

bool evaluate_boolean(const expression& tree, const node_values& values) {
    return as<bool>(evaluate(tree, values));
}

value value_in_state(const node& discrete, std::size_t state) {
    switch (type_of(discrete)) {
    case value_type::label: return state_label(discrete, state);
    case value_type::boolean: return state != 0;
    default: return state_number(discrete, state);
    }
}

namespace {

// -1: none.
int64_t selected_state(const node& of, const value& selecting) {
    switch (type_of(of)) {
    case value_type::label: return state_from_label(of, as<const char*>(selecting));
    case value_type::boolean: return as<bool>(selecting) ? 1 : 0;
    default:
        require(state_values_are_valid(of), q_error_invalid_state_values);
        return state_from_value(of, as<double>(selecting));
    }
}

}  // namespace

std::size_t evaluate_state(const expression& tree, const node& of, const node_values& values) {
    const int64_t state = selected_state(of, evaluate(tree, values));
    require(state >= 0, q_error_computation_failed);
    return static_cast<std::size_t>(state);
}

}  // namespace quarn
