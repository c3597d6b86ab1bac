#include <cmath>
#include <unordered_set>

#include "api_frame.h"
#include "expression.h"
#include "expression_types.h"

using namespace quarn;

namespace {

// Expressions that nothing owns, each once.
std::vector<expression*> unowned(const q_expression_t* arguments) {
    std::vector<expression*> listed;
    std::unordered_set<const expression*> known;
    for (; *arguments != nullptr; ++arguments) {
        require(!(*arguments)->is_owned() && known.insert(*arguments).second);
        listed.push_back(*arguments);
    }
    return listed;
}

}  // namespace

q_expression_t q_expression_make_composite(q_operator_t op, const q_expression_t* arguments) {
    return api_call<q_expression_t>(nullptr, {arguments}, [&] {
        require(is_operator(op));
        const std::vector<expression*> taken = unowned(arguments);
        require_arguments(op, taken);
        return new_composite(op, taken).release();
    });
}

q_expression_t q_expression_make_number(q_number_t number) {
    return api_call<q_expression_t>(nullptr, {}, [&] {
        require(!std::isnan(number));
        return new_number(number).release();
    });
}

q_expression_t q_expression_make_label(const char* label) {
    return api_call<q_expression_t>(nullptr, {label}, [&] { return new_label(label).release(); });
}

q_expression_t q_expression_make_node(q_node_t node) {
    return api_call<q_expression_t>(nullptr, {node}, [&] { return new_reference(*node).release(); });
}

q_expression_t q_expression_make_boolean(int flag) {
    return api_call<q_expression_t>(nullptr, {}, [&] { return new_boolean(flag != 0).release(); });
}

q_operator_t q_expression_get_operator(q_expression_t expression) {
    return api_call<q_operator_t>(q_operator_none, {expression}, [&] { return expression->op; });
}

const q_expression_t* q_expression_get_arguments(q_expression_t expression) {
    return api_call<const q_expression_t*>(nullptr, {expression}, [&] {
        require(expression->is_composite());
        return expression->arguments.array();
    });
}

q_number_t q_expression_get_number(q_expression_t expression) {
    return api_call<q_number_t>(-1.0, {expression}, [&] {
        require(expression->op == q_operator_number);
        return expression->number;
    });
}

const char* q_expression_get_label(q_expression_t expression) {
    return api_call<const char*>(nullptr, {expression}, [&] {
        require(expression->op == q_operator_label);
        return expression->label.get();
    });
}

q_node_t q_expression_get_node(q_expression_t expression) {
    return api_call<q_node_t>(nullptr, {expression}, [&] {
        require(expression->is_reference());
        return expression->node;
    });
}

int q_expression_get_boolean(q_expression_t expression) {
    return api_call<int>(-1, {expression}, [&] {
        require(expression->op == q_operator_boolean);
        return expression->flag ? 1 : 0;
    });
}

q_boolean_t q_expression_is_composite(q_expression_t expression) {
    return api_predicate({expression}, [&] { return expression->is_composite(); });
}

q_expression_t q_expression_clone(q_expression_t expression) {
    return api_call<q_expression_t>(nullptr, {expression}, [&] { return clone(*expression).release(); });
}

q_status_t q_expression_delete(q_expression_t expression) {
    return api_status({expression}, [&] {
        require(!expression->is_owned());
        delete expression;
    });
}
