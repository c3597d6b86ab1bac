#include "net_potential.h"

#include "links.h"
#include "net_data.h"
#include "net_normal.h"
#include "table.h"

namespace quarn {
namespace {

// What a refused link would have closed; null where that is not why it was refused.
const char* cycle_named_by(q_error_t code) noexcept {
    switch (code) {
    case q_error_cyclic_network: return "directed cycle";
    case q_error_cyclic_functional_dependency: return "cyclic functional dependency";
    default: return nullptr;
    }
}

}  // namespace

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
        while (!in_.accept(')')) parse_parent(parsed);
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

void potential_parser::parse_parent(head& parsed) {
    node& parent = parse_member();
    require_parent(parsed, parent);
    parsed.parents.push_back(&parent);
}

// Whether it may follow the parents listed so far: discrete ones come first, real-valued functions last.
void potential_parser::require_parent(const head& parsed, node& parent) {
    node& child = *parsed.child;
    if (!child.is_function()) {
        if (parent.is_utility()) in_.fail("utility node `%s' specified as parent", node_name(parent));
        if (child.is_discrete() && parent.is_continuous())
            in_.fail("continuous node `%s' is not allowed as parent of discrete node `%s'", node_name(parent),
                     node_name(child));
    }
    if (parsed.parents.empty()) return;
    const node& before = *parsed.parents.back();
    if (parent.is_discrete() && !before.is_discrete()) in_.fail("discrete parents must appear first");
    if (before.is_real_function() && !parent.is_real_function())
        in_.fail("real-valued function parents must appear last");
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
            const char* const obstacle = cycle_named_by(refused.code());
            if (obstacle == nullptr) throw;
            in_.fail("adding the link %s --> %s creates a %s", node_name(*parent), node_name(*parsed.child),
                     obstacle);
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

// attribute -> 'data' '=' data ';'
void potential_parser::parse_data(body& parsed) {
    if (parsed.has_data) in_.fail("`data' attribute specified twice");
    if (parsed.child.is_real_function())
        in_.fail("`data' attribute is not allowed for real-valued function nodes");
    parsed.has_data = true;
    in_.expect('=');
    // All parents are linked before the table is first asked for, so its discrete nodes are in the order of the head.
    table& described = own_table(parsed.child);
    if (parsed.child.is_continuous())
        parse_normals(in_, described);
    else
        parse_numbers(in_, described);
    in_.expect(';');
}

}  // namespace quarn
