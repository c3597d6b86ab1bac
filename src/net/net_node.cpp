#include "net_node.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "states.h"

namespace quarn {
namespace {

class node_parser {
public:
    node_parser(net_reader& in, node& declared) noexcept : in_(in), node_(declared) {}

    void parse_attributes();

private:
    struct attribute {
        std::string_view name;
        void (node_parser::*parse)();
    };
    static const std::array<attribute, 5> attributes;

    void parse_attribute(const std::string& name);
    void parse_label();
    void parse_position();
    void parse_states();
    void parse_subtype();
    void parse_state_values();
    double parse_state_value();
    void finish_boolean();

    net_reader& in_;
    node& node_;
    bool is_boolean_ = false;  // becomes so at the end: the states may come after the subtype
    bool has_states_ = false;
    bool has_state_values_ = false;
};

constexpr std::array<node_parser::attribute, 5> node_parser::attributes{{
    {"label", &node_parser::parse_label},
    {"position", &node_parser::parse_position},
    {"states", &node_parser::parse_states},
    {"subtype", &node_parser::parse_subtype},
    {"state_values", &node_parser::parse_state_values},
}};

struct subtype_word {
    std::string_view word;
    q_subtype_t subtype;
};
constexpr std::array<subtype_word, 4> subtypes{{
    {"label", q_subtype_label},
    {"boolean", q_subtype_boolean},
    {"number", q_subtype_number},
    {"interval", q_subtype_interval},
}};

// { attribute } '}'
void node_parser::parse_attributes() {
    std::string name;
    while (in_.next_attribute(name)) parse_attribute(name);
    if (is_boolean_) finish_boolean();
}

// attribute -> NAME '=' value ';'
void node_parser::parse_attribute(const std::string& name) {
    const auto known = std::ranges::find(attributes, name, &attribute::name);
    if (known != attributes.end()) return (this->*known->parse)();
    const std::string value = in_.expect_string_value(user_attribute_message);
    node_.attributes.set(name.c_str(), value.c_str(), {});
}

// '=' STRING ';'
void node_parser::parse_label() {
    node_.label = duplicate_string(in_.expect_string_value("string expected").c_str());
}

// '=' '(' NUMBER NUMBER ')' ';'
void node_parser::parse_position() {
    in_.expect('=');
    in_.expect('(');
    node_.x = truncate(in_.expect_number());
    node_.y = truncate(in_.expect_number());
    in_.expect(')');
    in_.expect(';');
}

// '=' '(' STRING { STRING } ')' ';'
void node_parser::parse_states() {
    if (!node_.is_discrete()) in_.fail("only discrete nodes can have states");
    if (has_states_) in_.fail("states specified twice (or more)");
    in_.expect('=');
    in_.expect('(');
    std::vector<std::string> labels;
    while (!in_.accept(')')) labels.push_back(in_.expect_string("state or `)' expected"));
    if (labels.empty()) in_.fail("empty list of states");
    in_.expect(';');

    set_state_count(node_, labels.size());
    for (std::size_t state = 0; state < labels.size(); ++state)
        set_state_label(node_, state, labels[state].c_str());
    has_states_ = true;
}

// '=' NAME ';'
void node_parser::parse_subtype() {
    if (!node_.is_discrete()) in_.fail("subtype designations only make sense for discrete nodes");
    constexpr const char* message = "`label', `boolean', `number', or `interval' expected";
    in_.expect('=');
    in_.next();
    if (!in_.is_name()) in_.fail("%s", message);
    q_subtype_t subtype = q_subtype_label;
    if (const auto known = std::ranges::find(subtypes, in_.text(), &subtype_word::word);
        known != subtypes.end())
        subtype = known->subtype;
    else
        in_.report("%s", message);  // the rest can be read all the same
    in_.expect(';');

    is_boolean_ = subtype == q_subtype_boolean;
    set_subtype(node_, is_boolean_ ? q_subtype_t{q_subtype_label} : subtype);
}

// '=' '(' state_value { state_value } ')' ';'
void node_parser::parse_state_values() {
    if (!node_.is_discrete()) in_.fail("only discrete nodes can have state values");
    if (!node_.has_values()) in_.fail("only numeric nodes can have state values");
    if (!has_states_) in_.fail("states must be specified before state values");
    if (has_state_values_) in_.fail("state values have already been specified");
    in_.expect('=');
    in_.expect('(');
    std::vector<double> values;
    while (!in_.accept(')')) values.push_back(parse_state_value());
    if (values.size() != node_.state_count + (node_.subtype == q_subtype_interval ? 1 : 0))
        in_.fail("incorrect number of state values");
    in_.expect(';');

    for (std::size_t i = 0; i < values.size(); ++i) set_state_value(node_, i, values[i]);
    has_state_values_ = true;
}

// state_value -> [ '+' | '-' ] ( NUMBER | 'infinity' )
double node_parser::parse_state_value() {
    const bool negative = in_.accept('-');
    if (!negative) in_.accept('+');
    double value = std::numeric_limits<double>::max();
    if (in_.next() == token_number)
        value = in_.number();
    else if (!in_.is_name() || in_.text() != "infinity")
        in_.fail("state value expected");
    return negative ? -value : value;
}

void node_parser::finish_boolean() {
    if (!has_states_) set_state_count(node_, 2);
    if (node_.state_count != 2) in_.fail("a boolean node must have exactly two states");
    set_subtype(node_, q_subtype_boolean);
}

}  // namespace

// declaration -> NAME '{' { attribute } '}'
void parse_node(net_reader& in, domain& target, q_category_t category, q_kind_t kind) {
    const char* name = in.expect_name().c_str();
    if (target.names.find(target, name) != nullptr) in.fail("a node with name `%s' already exists", name);
    node& declared = create_node(target, category, kind);
    set_node_name(declared, name);
    in.expect('{');
    node_parser(in, declared).parse_attributes();
}

}  // namespace quarn
