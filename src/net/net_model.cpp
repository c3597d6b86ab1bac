#include "net_model.h"

#include <cmath>

#include "expression_parser.h"
#include "expression_types.h"
#include "model.h"
#include "table.h"

namespace quarn {

bool model_parser::parse_attribute(const std::string& name) {
    if (name == "model_nodes")
        parse_nodes();
    else if (name == "model_data")
        parse_data();
    else if (name == "samples_per_interval")
        parse_samples_per_interval();
    else
        return false;
    return true;
}

// '=' '(' { NAME } ')' ';'
void model_parser::parse_nodes() {
    if (has_nodes_) in_.fail("`model_nodes' attribute specified twice");
    if (owner_.is_continuous()) in_.fail("models cannot be specified for CG nodes");
    has_nodes_ = true;
    const uint64_t parent_mark = mark_parents();
    const uint64_t listed_mark = owner_.domain->new_mark();
    in_.expect('=');
    in_.expect('(');
    while (!in_.accept(')')) {
        const char* const name = in_.expect_name().c_str();
        node* const listed = owner_.domain->names.find(*owner_.domain, name);
        if (listed == nullptr) in_.fail("node `%s' not found", name);
        if (listed->mark == listed_mark) in_.fail("node `%s' appears twice in `model_nodes' attribute", name);
        if (listed->mark != parent_mark)
            in_.fail("node `%s' is not a parent of node `%s'", name, node_name(owner_));
        if (!listed->is_discrete()) in_.fail("the `model_nodes' attribute must contain discrete nodes only");
        listed->mark = listed_mark;
        nodes_.push_back(listed);
    }
    in_.expect(';');
}

// '=' '(' [ expression ] { ',' [ expression ] } ')' ';'
void model_parser::parse_data() {
    if (!expressions_.empty()) in_.fail("`model_data' attribute specified twice");
    if (!has_nodes_) in_.fail("`model_nodes' attribute has not been specified");
    parent_mark_ = mark_parents();
    in_.expect('=');
    in_.expect('(');
    const std::size_t count = configurations(nodes_);
    expressions_.push_back(parse_suitable());
    while (expressions_.size() < count) {
        in_.expect(',');
        expressions_.push_back(parse_suitable());
    }
    in_.expect(')');
    in_.expect(';');
}

// A place may be left empty: no expression for that configuration.
owned_expression model_parser::parse_suitable() {
    if (const char upcoming = in_.source().upcoming(); upcoming == ',' || upcoming == ')') return nullptr;
    owned_expression parsed = parse_expression(in_.source(), *owner_.domain);
    for (const expression* at = parsed.get(); at != nullptr; at = next_in_tree(*at, *parsed))
        if (at->is_reference() && at->node->mark != parent_mark_)
            in_.fail("node `%s' is not a parent of node `%s'", node_name(*at->node), node_name(owner_));
    require_suitable(owner_, *parsed);
    return parsed;
}

// '=' NUMBER ';'
void model_parser::parse_samples_per_interval() {
    in_.expect('=');
    const bool is_number = in_.next() == token_number;
    const double samples = in_.number();
    if (!is_number || !(samples >= 1 && samples <= static_cast<double>(most_samples_per_interval)) ||
        samples != std::floor(samples))
        in_.fail("`samples_per_interval' must be a positive integer");
    in_.expect(';');
    samples_per_interval_ = static_cast<std::size_t>(samples);
}

uint64_t model_parser::mark_parents() noexcept {
    const uint64_t mark = owner_.domain->new_mark();
    for (node* parent : owner_.parents) parent->mark = mark;
    return mark;
}

void model_parser::finish() {
    if (expressions_.empty()) return;
    model& made = create_model(owner_, nodes_);
    made.samples_per_interval = samples_per_interval_;
    for (std::size_t i = 0; i < expressions_.size(); ++i) {
        set_expression(made, i, expressions_[i].get());
        static_cast<void>(expressions_[i].release());
    }
}

}  // namespace quarn
