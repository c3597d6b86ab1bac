#include "case_parser.h"

#include <cmath>

#include "evidence.h"
#include "net_lexer.h"
#include "node.h"
#include "states.h"

namespace quarn {
namespace {

class case_parser {
public:
    case_parser(std::string_view source, domain& observed, parse_reports& reports) noexcept
        : in_(source, position_unit::line, reports), domain_(observed) {}

    void parse();

private:
    node& parse_node(token name);
    void parse_finding(node& observed);
    void parse_name(node& observed);
    void parse_label(node& observed);
    void parse_number(node& observed);
    void parse_index(node& observed);
    void parse_weights(node& observed);
    double parse_weight();
    void select(node& observed, int64_t state);
    template <class Operation>
    void enter(const Operation& operation);

    net_lexer in_;
    domain& domain_;
};

// case -> { NAME ':' finding }
void case_parser::parse() {
    for (token next = in_.next(); next != token_end; next = in_.next()) {
        node& observed = parse_node(next);
        if (evidence_is_entered(observed))
            in_.report("findings specified twice for `%s'", observed.name.get());
        if (in_.next() != ':') in_.fail("`%c' expected", ':');
        parse_finding(observed);
    }
}

node& case_parser::parse_node(token name) {
    if (name != token_name && name != token_dotted_name) in_.fail("node name expected");
    node* const named = domain_.names.find(domain_, in_.text().c_str());
    if (named == nullptr) in_.fail("the domain has no node named `%s'", in_.text().c_str());
    if (!named->has_kind()) in_.fail("only chance, decision, and discrete function nodes can have findings");
    return *named;
}

// finding -> STRING | NAME | NUMBER | '#' NUMBER | '(' NUMBER { NUMBER } ')'
void case_parser::parse_finding(node& observed) {
    switch (static_cast<int>(in_.next())) {
    case token_string: return parse_label(observed);
    case token_name: return parse_name(observed);
    case token_number: return parse_number(observed);
    case '#': return parse_index(observed);
    case '(': return parse_weights(observed);
    case token_end: in_.fail("unexpected end-of-file");
    default: in_.fail("illegal token");
    }
}

void case_parser::parse_name(node& observed) {
    if (!observed.is_discrete() || observed.subtype != q_subtype_boolean) return parse_label(observed);
    const bool state = in_.text() == "true";
    if (state || in_.text() == "false")
        select(observed, state ? 1 : 0);
    else
        in_.report("state of boolean node should be `false' or `true'");
}

void case_parser::parse_label(node& observed) {
    if (!observed.is_discrete() || observed.subtype != q_subtype_label)
        return in_.report("state labels are only allowed for labeled nodes");
    const char* const label = in_.text().c_str();
    const int64_t state = state_from_label(observed, label);
    if (state >= 0)
        select(observed, state);
    else
        in_.report("\"%s\" is not a (unique) state label of `%s'", label, observed.name.get());
}

void case_parser::parse_number(node& observed) {
    const double number = in_.number();
    if (observed.is_continuous()) return enter([&] { enter_value(observed, number); });
    const char* const name = observed.name.get();
    if (!observed.has_values())
        return in_.report("node %s: numeric findings are only allowed for CG, numbered, and interval nodes",
                          name);
    if (!state_values_are_valid(observed))
        return in_.report("the state values of `%s' do not form an increasing sequence", name);
    const int64_t state = state_from_value(observed, number);
    if (state >= 0)
        select(observed, state);
    else
        in_.report("no state of `%s' corresponds to the value %.8G", name, number);
}

void case_parser::parse_index(node& observed) {
    if (!observed.is_discrete()) in_.fail("state index can only be specified for discrete nodes");
    if (in_.next() != token_number || !(in_.number() >= 0) || in_.number() != std::floor(in_.number()) ||
        !(in_.number() < static_cast<double>(observed.state_count)))
        in_.fail("`#' must be followed by a valid state index");
    select(observed, static_cast<int64_t>(in_.number()));
}

void case_parser::parse_weights(node& observed) {
    if (!observed.is_discrete()) in_.fail("likelihood can only be specified for discrete nodes");
    for (std::size_t state = 0; state < observed.state_count; ++state) {
        const double weight = parse_weight();
        enter([&] { enter_finding(observed, state, weight); });
    }
    const token last = in_.next();
    if (last == token_number) in_.fail("likelihood vector too long");
    if (last != ')') in_.fail("')' expected");
}

double case_parser::parse_weight() {
    const token next = in_.next();
    if (next == ')') in_.fail("likelihood vector too short");
    if (next != token_number) in_.fail("number expected");
    if (in_.number() < 0) in_.fail("likelihood values must be nonnegative");
    return in_.number();
}

void case_parser::select(node& observed, int64_t state) {
    enter([&] { select_state(observed, static_cast<std::size_t>(state)); });
}

template <class Operation>
void case_parser::enter(const Operation& operation) {
    try {
        operation();
    } catch (...) {
        const q_error_t code = code_of_current_exception();
        in_.report("API error: %s", error_name(static_cast<uint32_t>(code)));
        throw reported_failure(code);
    }
}

}  // namespace

void parse_case(std::string_view source, domain& observed, parse_reports& reports) {
    retract_all_findings(observed);
    try {
        case_parser(source, observed, reports).parse();
        require(reports.message_count() == 0, q_error_parse);
    } catch (...) {
        retract_all_findings(observed);
        throw;
    }
}

}  // namespace quarn
