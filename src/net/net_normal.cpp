#include "net_normal.h"

#include <algorithm>
#include <vector>

#include "net_data.h"
#include "node.h"

namespace quarn {
namespace {

class normal_parser {
public:
    normal_parser(net_reader& in, table& described) noexcept : in_(in), described_(described) {}

    void parse();

private:
    // What is to be added to a moment of the table.
    struct addend {
        std::size_t entry;
        double value;
    };

    void parse_normal();
    void parse_mean();
    void parse_term(double sign);
    double parse_variance();
    std::size_t coefficient_of(const std::string& name);
    void add(std::size_t place, double value) { addends_.push_back({block_ + place, value}); }

    net_reader& in_;
    table& described_;
    std::size_t block_ = 0;  // where the block of the present configuration begins
    std::vector<addend> addends_;
};

void normal_parser::parse() {
    parse_entries(in_, described_.size, [&] { parse_normal(); });
    described_.materialise();
    std::ranges::fill(described_.moments, 0.0);
    for (const addend& read : addends_) described_.moments[read.entry] += read.value;
}

// normal -> 'normal' '(' mean ',' variance ')'
void normal_parser::parse_normal() {
    in_.next();
    if (!in_.is_name() || in_.text() != "normal") in_.fail("the keyword `normal' was expected");
    in_.expect('(');
    parse_mean();
    add(cg_variance, parse_variance());
    in_.expect(')');
    block_ += described_.block_size();
}

// mean -> term { ( '+' | '-' ) term }; reads the comma behind it too. A sign may belong to the number that follows it.
void normal_parser::parse_mean() {
    double sign = 1;
    for (;;) {
        parse_term(sign);
        const token next = in_.next();
        if (next == ',') return;
        if (next == token_number && in_.number_has_sign())
            in_.push_back();
        else if (next != '+' && next != '-')
            in_.fail("expected one of: ,+-");
        sign = next == '-' ? -1 : 1;
    }
}

// term -> NUMBER | NAME | NUMBER '*' NAME
void normal_parser::parse_term(double sign) {
    const token first = in_.next();
    if (in_.is_name()) return add(coefficient_of(in_.text()), sign);
    if (first != token_number) in_.fail("<number> or <node name> expected in mean value expression");
    const double value = sign * in_.number();
    add(in_.accept('*') ? coefficient_of(in_.expect_name()) : cg_intercept, value);
}

// variance -> NUMBER
double normal_parser::parse_variance() {
    if (in_.next() != token_number) in_.fail("variance (a nonnegative <number>) expected");
    if (in_.number() < 0) in_.fail("variance must be nonnegative");
    return in_.number();
}

// The place of the coefficient of a continuous parent.
std::size_t normal_parser::coefficient_of(const std::string& name) {
    domain& target = *described_.owner->domain;
    const node* const parent = target.names.find(target, name.c_str());
    if (parent == nullptr) in_.fail("node `%s' not found", name.c_str());
    const std::size_t k = described_.continuous_position(parent);
    if (k == 0 || k == described_.continuous_count())
        in_.fail("node `%s' is not part of the table", name.c_str());
    return cg_coefficient(k);
}

}  // namespace

void parse_normals(net_reader& in, table& described) { normal_parser(in, described).parse(); }

}  // namespace quarn
