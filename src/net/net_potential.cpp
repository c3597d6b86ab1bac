#include "net_potential.h"

#include <algorithm>

#include "chain_component.h"
#include "family_tables.h"
#include "links.h"
#include "net_data.h"
#include "net_model.h"
#include "net_normal.h"
#include "table.h"

namespace quarn {
namespace {

// What the operation that has just been refused would have closed. Where that is not why, the failure goes on.
const char* refused_cycle(const failure& refused) {
    switch (refused.code()) {
    case q_error_cyclic_network: return "directed cycle";
    case q_error_cyclic_functional_dependency: return "cyclic functional dependency";
    default: throw;
    }
}

bool is_model_attribute(const std::string& name) {
    return name == "model_nodes" || name == "model_data" || name == "samples_per_interval";
}

}  // namespace

// potential -> 'potential' head '{' body
void potential_parser::parse() {
    const head parsed = parse_head();
    if (parsed.children.size() > 1) {
        require_unlinked(parsed);
        table& shared = join(parsed);
        in_.expect('{');
        return parse_shared_body(shared);
    }
    node& child = *parsed.children.front();
    if (!described_.insert(&child).second)
        in_.fail("potential specified twice for node `%s'", node_name(child));
    add_links(parsed);
    in_.expect('{');
    parse_own_body(child);
}

// head -> '(' NAME { NAME } [ '|' { NAME } ] ')'
potential_parser::head potential_parser::parse_head() {
    head parsed;
    head_mark_ = target_.new_mark();
    in_.expect('(');
    token after = in_.next();
    for (; after != '|' && after != ')'; after = in_.next()) {
        in_.push_back();
        parse_child(parsed);
    }
    if (parsed.children.empty()) in_.fail("empty child node list");
    if (after == '|')
        while (!in_.accept(')')) parse_parent(parsed);
    return parsed;
}

void potential_parser::parse_child(head& parsed) {
    node& child = parse_member();
    if (parsed.children.size() == 1) require_joinable(*parsed.children.front());
    if (!parsed.children.empty()) require_joinable(child);
    parsed.children.push_back(&child);
}

// Whether it may be one of several children.
void potential_parser::require_joinable(const node& member) {
    if (member.is_real_function()) in_.fail("real-valued function nodes are not allowed in chain potentials");
    if (!member.is(q_category_chance) || !member.is_discrete())
        in_.fail("undirected links can only be specified for discrete chance nodes");
}

void potential_parser::parse_parent(head& parsed) {
    node& parent = parse_member();
    require_parent(parsed, parent);
    parsed.parents.push_back(&parent);
}

// Whether it may follow the parents listed so far: discrete ones come first, real-valued functions last.
void potential_parser::require_parent(const head& parsed, node& parent) {
    node& child = *parsed.children.front();
    if (!child.is_function()) {
        if (parent.is_utility()) in_.fail("utility node `%s' specified as parent", node_name(parent));
        if (child.is_discrete() && parent.is_continuous())
            in_.fail("continuous node `%s' is not allowed as parent of discrete node `%s'", node_name(parent),
                     node_name(child));
    }
    if (parsed.children.size() > 1 && parent.is_real_function())
        in_.fail("real-valued function nodes are not allowed in chain potentials");
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

// The parents of the child become those of the head, in its order: it may have got some by potentials that it shares.
void potential_parser::add_links(const head& parsed) {
    node& child = *parsed.children.front();
    for (const node* parent : child.parents)
        if (parent->mark != head_mark_)
            in_.fail("potential for node %s must include all parents", node_name(child));
    for (node* parent : parsed.parents)
        if (!child.parents.contains(parent)) add_link(child, *parent);
    for (std::size_t i = 0; i < parsed.parents.size(); ++i) child.parents.replace(i, parsed.parents[i]);
}

void potential_parser::add_link(node& child, node& parent) {
    try {
        add_parent(child, parent);
    } catch (const failure& refused) {
        in_.fail("adding the link %s --> %s creates a %s", node_name(parent), node_name(child),
                 refused_cycle(refused));
    }
}

// own body -> { attribute } '}'
void potential_parser::parse_own_body(node& child) {
    if (in_.accept('}')) return in_.report("warning: no potential data specified");
    model_parser expressions(in_, child);
    bool has_data = false;
    std::string name;
    while (in_.next_attribute(name)) {
        if (name == "data") {
            if (has_data) in_.fail("`data' attribute specified twice");
            has_data = true;
            parse_data(child);
        } else if (name == "experience") {
            parse_experience(child);
        } else if (name == "fading") {
            parse_fading(child);
        } else if (!expressions.parse_attribute(name)) {
            in_.fail("unknown field: `%s'", name.c_str());
        }
    }
    expressions.finish();
}

// attribute -> 'data' '=' data ';'
void potential_parser::parse_data(node& child) {
    if (child.is_real_function()) in_.fail("`data' attribute is not allowed for real-valued function nodes");
    // All parents are linked before the table is first asked for, so its discrete nodes are in the order of the head.
    parse_table(own_table(child));
}

// attribute -> 'experience' '=' data ';'
void potential_parser::parse_experience(node& child) {
    if (child.experience) in_.fail("`experience' attribute specified twice");
    if (!child.is(q_category_chance)) in_.fail("experience data can only be specified for chance nodes");
    child.experience = new_parent_table(table_type::zeros, child);
    parse_table(*child.experience);
}

// attribute -> 'fading' '=' data ';'
void potential_parser::parse_fading(node& child) {
    if (child.fading) in_.fail("`fading' attribute specified twice");
    if (!child.is(q_category_chance) || !child.is_discrete())
        in_.fail("fading data can only be specified for discrete chance nodes");
    child.fading = new_parent_table(table_type::ones, child);
    parse_table(*child.fading);
}

// '=' data ';'
void potential_parser::parse_table(table& described) {
    in_.expect('=');
    if (described.continuous_count() > 0)
        parse_normals(in_, described);
    else
        parse_numbers(in_, described);
    in_.expect(';');
}

// No two children may share a potential yet, and none may have a link to a node of the head.
void potential_parser::require_unlinked(const head& parsed) {
    for (node* child : parsed.children)
        for (node* below : child->children)
            if (below->mark == head_mark_)
                in_.fail("the directed link %s --> %s should have been included in the potential for %s",
                         node_name(*child), node_name(*below), node_name(*below));
    const uint64_t child_mark = target_.new_mark();
    for (node* child : parsed.children) child->mark = child_mark;
    for (node* child : parsed.children)
        for (const table* shared : shared_by_[child])
            if (std::ranges::count(shared->nodes, child_mark, &node::mark) > 1)
                in_.fail("links specified twice for %s", node_name(*child));
}

table& potential_parser::join(const head& parsed) {
    try {
        table& joining = join_by_potential(target_, parsed.children, parsed.parents);
        for (const node* child : parsed.children) shared_by_[child].push_back(&joining);
        return joining;
    } catch (const failure& refused) {
        in_.fail("adding chain potential creates a %s", refused_cycle(refused));
    }
}

// shared body -> { attribute } '}'
void potential_parser::parse_shared_body(table& shared) {
    if (in_.accept('}')) return in_.report("warning: no potential data specified");
    bool has_data = false;
    std::string name;
    while (in_.next_attribute(name)) {
        if (name == "experience" || name == "fading")
            in_.fail("%s data cannot be specified for chain graph potentials", name.c_str());
        if (is_model_attribute(name)) in_.fail("models cannot be specified for chain graph potentials");
        if (name != "data") in_.fail("unknown field: `%s'", name.c_str());
        if (has_data) in_.fail("`data' attribute specified twice");
        has_data = true;
        parse_table(shared);
    }
}

}  // namespace quarn
