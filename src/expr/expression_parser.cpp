#include "expression_parser.h"

#include <limits>
#include <vector>

#include "expression_lexer.h"
#include "expression_types.h"

namespace quarn {
namespace {

constexpr bool is_name(token read) noexcept { return read == token_name || read == token_dotted_name; }

// Each production leaves its expression on top of the operands. Operators take theirs from there; so the functions need
// little stack, however deeply they call each other.
class expression_parser {
public:
    expression_parser(scanner& in, domain& target) noexcept : in_(in), lexer_(in), target_(target) {}
    ~expression_parser() {
        for (expression* operand : operands_) delete operand;
    }
    expression_parser(const expression_parser&) = delete;
    expression_parser& operator=(const expression_parser&) = delete;

    owned_expression parse();
    void expect_end();

private:
    void parse_expression();
    void parse_sum();
    void parse_term();
    void parse_power();
    void parse_factor();
    void parse_name();
    void parse_call(const operator_row& called);
    void parse_state_index();
    void parse_inner();

    void push(owned_expression operand);
    void compose(q_operator_t op, std::size_t count);
    void enter();

    static constexpr std::size_t deepest = 256;

    scanner& in_;
    expression_lexer lexer_;
    domain& target_;
    std::vector<expression*> operands_;  // owned until they become arguments
    std::size_t depth_ = 0;              // of inner expressions and exponents
};

owned_expression expression_parser::parse() {
    parse_expression();
    const owned_expression::pointer parsed = operands_.back();
    operands_.pop_back();
    return owned_expression(parsed);
}

void expression_parser::expect_end() {
    if (lexer_.next() != token_end) in_.fail("unexpected token");
}

// expression -> sum [ comparison sum ]
void expression_parser::parse_expression() {
    parse_sum();
    const token comparison = lexer_.accept("<=>!");
    if (comparison == token{}) return;
    parse_sum();
    compose(comparison_of(comparison), 2);
}

// sum -> [ '+' | '-' ] term { ( '+' | '-' ) term }
void expression_parser::parse_sum() {
    const bool is_negative = lexer_.accept("+-") == '-';
    parse_term();
    if (is_negative && operands_.back()->op == q_operator_number)
        operands_.back()->number = -operands_.back()->number;
    else if (is_negative)
        compose(q_operator_negate, 1);
    while (const token sign = lexer_.accept("+-")) {
        parse_term();
        compose(sign == '+' ? q_operator_add : q_operator_subtract, 2);
    }
}

// term -> power { ( '*' | '/' ) power }
void expression_parser::parse_term() {
    parse_power();
    while (const token sign = lexer_.accept("*/")) {
        parse_power();
        compose(sign == '*' ? q_operator_multiply : q_operator_divide, 2);
    }
}

// power -> factor [ '^' power ]
void expression_parser::parse_power() {
    parse_factor();
    if (lexer_.accept("^") == token{}) return;
    enter();
    parse_power();
    --depth_;
    compose(q_operator_power, 2);
}

// factor -> NUMBER | STRING | name | '#' NAME | '(' expression ')'
void expression_parser::parse_factor() {
    const token first = lexer_.next();
    if (first == token_number) return push(new_number(in_.number()));
    if (first == token_string) return push(new_label(in_.text().c_str()));
    if (is_name(first)) return parse_name();
    if (first == '#') return parse_state_index();
    if (first != '(') in_.fail("unexpected token");
    parse_inner();
    if (lexer_.next() != ')') in_.fail("`)' expected");
}

// name -> 'false' | 'true' | 'infinity' | NAME | call
void expression_parser::parse_name() {
    const std::string& name = in_.text();
    if (name == "false" || name == "true") return push(new_boolean(name == "true"));
    if (in_.upcoming() == '(') {
        const operator_row* const called = find_function(name);
        if (called == nullptr) in_.fail("unknown operator `%s'", name.c_str());
        return parse_call(*called);
    }
    if (name == "infinity") return push(new_number(std::numeric_limits<double>::max()));
    node* const found = target_.names.find(target_, name.c_str());
    if (found == nullptr) in_.fail("no such node: %s", name.c_str());
    push(new_reference(*found));
}

// call -> NAME '(' [ expression { ',' expression } ] ')'
void expression_parser::parse_call(const operator_row& called) {
    const std::size_t base = operands_.size();
    lexer_.next();
    if (lexer_.accept(")") == token{}) {
        token separator = token{};
        do {
            parse_inner();
            separator = lexer_.next();
            if (separator != ',' && separator != ')') in_.fail("`,' or `)' expected");
        } while (separator == ',');
    }
    compose(called.op, operands_.size() - base);
}

void expression_parser::parse_state_index() {
    node* const found = is_name(lexer_.next()) ? target_.names.find(target_, in_.text().c_str()) : nullptr;
    if (found == nullptr || !found->is_discrete())
        in_.fail("`#' must be followed by the name of a discrete node");
    push(new_reference(*found));
    compose(q_operator_state_index, 1);
}

void expression_parser::parse_inner() {
    enter();
    parse_expression();
    --depth_;
}

void expression_parser::push(owned_expression operand) {
    operands_.push_back(operand.get());
    static_cast<void>(operand.release());
}

// Replaces the last operands by what the operator makes of them.
void expression_parser::compose(q_operator_t op, std::size_t count) {
    const auto arguments = std::span<expression* const>(operands_).last(count);
    require_arguments(op, arguments);
    owned_expression composite = new_composite(op, arguments);
    operands_.resize(operands_.size() - count);
    push(std::move(composite));
}

void expression_parser::enter() {
    if (depth_ == deepest) in_.fail("expression nested too deeply");
    ++depth_;
}

owned_expression parse(scanner& in, domain& target, bool is_whole) {
    expression_parser parser(in, target);
    try {
        owned_expression parsed = parser.parse();
        if (is_whole) parser.expect_end();
        return parsed;
    } catch (const reported_failure&) {
        throw;
    } catch (...) {
        const q_error_t code = code_of_current_exception();
        if (code == q_error_no_memory)
            in.report("out-of-memory");
        else
            in.report("API error: %s", error_description(static_cast<uint32_t>(code)));
        throw reported_failure(code);
    }
}

}  // namespace

owned_expression parse_expression(scanner& in, domain& target) { return parse(in, target, false); }

owned_expression parse_whole_expression(scanner& in, domain& target) { return parse(in, target, true); }

}  // namespace quarn
