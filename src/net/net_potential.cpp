#include "net_potential.h"

#include <algorithm>

#include "links.h"
#include "table.h"

namespace quarn {

// potential -> 'potential' head '{' body
void potential_parser::parse() {
    const head parsed = parse_head();
    if (!described_.insert(parsed.child).second)
        in_.fail("potential specified twice for node `%s'", node_name(*parsed.child));
    add_links(parsed);
    in_.expect('{');
    parse_body(*parsed.child);
}

// head -> '(' NAME [ '|' { NAME } ] ')'
potential_parser::head potential_parser::parse_head() {
    head parsed;
    head_mark_ = target_.new_mark();
    in_.expect('(');
    parse_child(parsed);
    const token after = in_.next();
    if (after == '|')
        while (!in_.accept(')')) parsed.parents.push_back(&parse_member());
    else if (in_.is_name())
        in_.fail("`)' expected");
    else if (after != ')')
        in_.fail("`|', `)', or a node name expected");
    return parsed;
}

void potential_parser::parse_child(head& parsed) {
    const token first = in_.next();
    if (first == '|' || first == ')') in_.fail("empty child node list");
    in_.push_back();
    parsed.child = &parse_member();
}

// member -> NAME
node& potential_parser::parse_member() {
    in_.next();
    if (!in_.is_name()) in_.fail("`|', `)', or a node name expected");
    const char* name = in_.text().c_str();
    node* member = target_.names.find(target_, name);
    if (member == nullptr) in_.fail("node `%s' not found", name);
    if (member->mark == head_mark_) in_.fail("node `%s' appears twice in potential specification", name);
    member->mark = head_mark_;
    return *member;
}

void potential_parser::add_links(const head& parsed) {
    for (node* parent : parsed.parents) {
        try {
            add_parent(*parsed.child, *parent);
        } catch (const failure& refused) {
            if (refused.code() != q_error_cyclic_network) throw;
            in_.fail("adding the link %s --> %s creates a directed cycle", node_name(*parent),
                     node_name(*parsed.child));
        }
    }
}

// body -> { attribute } '}'
void potential_parser::parse_body(node& child) {
    if (in_.accept('}')) return in_.report("warning: no potential data specified");
    body parsed{child};
    std::string name;
    while (in_.next_attribute(name)) {
        if (name != "data") in_.fail("unknown field: `%s'", name.c_str());
        parse_data(parsed);
    }
}

// attribute -> 'data' '=' numbers ';'
void potential_parser::parse_data(body& parsed) {
    if (parsed.has_data) in_.fail("`data' attribute specified twice");
    parsed.has_data = true;
    in_.expect('=');
    // All parents are linked before the table is first asked for, so it has the order of the head: parents, child.
    table& described = own_table(parsed.child);
    const std::vector<double> numbers = parse_numbers(described.size);
    in_.expect(';');
    described.materialise();
    std::ranges::copy(numbers, described.data.begin());
}

// numbers -> '(' { '(' | ')' | NUMBER } ')', as many numbers as the table has entries. Inner parentheses only need to
// balance. Memory is taken as numbers come: a short text with a huge table must not exhaust it.
std::vector<double> potential_parser::parse_numbers(std::size_t count) {
    std::vector<double> numbers;
    in_.expect('(');
    std::size_t open = 1;
    while (numbers.size() < count) {
        const token next = in_.next();
        if (next == '(') {
            ++open;
        } else if (next == ')' && open > 1) {
            --open;
        } else {
            in_.push_back();
            numbers.push_back(in_.expect_number());
            if (numbers.back() < 0) in_.report("warning: negative value in probability potential");
        }
    }
    for (; open > 0; --open) in_.expect(')');
    return numbers;
}

}  // namespace quarn
