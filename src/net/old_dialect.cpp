#include "old_dialect.h"

#include <unordered_map>

#include "links.h"
#include "net_data.h"
#include "node.h"
#include "states.h"

namespace quarn {
namespace {

class old_dialect_parser {
public:
    old_dialect_parser(net_reader& in, domain& target) noexcept : in_(in), target_(target) {}

    void parse();

private:
    // Lines on which a node was named.
    struct occurrences {
        std::size_t first;
        std::size_t definition;  // 0: not defined yet
    };

    void parse_header();
    void parse_definition();
    void parse_parent(node& child);
    node& parse_states(const std::string& name, std::size_t line);
    void require_all_defined();

    net_reader& in_;
    domain& target_;
    std::unordered_map<const node*, occurrences> lines_;
};

void old_dialect_parser::parse() {
    parse_header();
    while (in_.next() != token_end) parse_definition();
    require_all_defined();
}

// NAME STRING NUMBER NUMBER NUMBER; name, label and scale mean nothing to a domain.
void old_dialect_parser::parse_header() {
    in_.next();
    in_.next();
    const double width = in_.expect_number();
    const double height = in_.expect_number();
    const double scale = in_.expect_number();
    if (width < 0 || height < 0 || scale < 0)
        in_.fail("node width and height, and scale factor must be nonnegative");
    target_.node_width = truncate(width + 0.5);
    target_.node_height = truncate(height + 0.5);
}

// definition -> NAME STRING states { parent } data
void old_dialect_parser::parse_definition() {
    if (!in_.is_name()) in_.fail("node name (or end-of-file) expected");
    const std::string name = in_.text();
    const std::size_t line = in_.position();
    if (const node* known = target_.names.find(target_, name.c_str()))
        if (const std::size_t definition = lines_.at(known).definition; definition != 0)
            in_.fail("node `%s' has already been defined (at line %s)", name.c_str(),
                     std::to_string(definition).c_str());
    const std::string label = in_.expect_string("string expected");
    node& defined = parse_states(name, line);
    lines_.at(&defined).definition = line;
    defined.label = duplicate_string(label.c_str());
    while (in_.next() != '(') parse_parent(defined);
    in_.push_back();
    // The parents were linked first, so the discrete nodes of the table are in their order.
    parse_numbers(in_, own_table(defined));
}

// parent -> NAME states
void old_dialect_parser::parse_parent(node& child) {
    if (!in_.is_name()) in_.fail("parent node name or a left parenthesis expected");
    const std::string name = in_.text();
    node& parent = parse_states(name, in_.position());
    if (child.parents.contains(&parent))
        in_.fail("node `%s' appears twice as a parent of `%s'", name.c_str(), node_name(child));
    try {
        add_parent(child, parent);
    } catch (const failure& refused) {
        if (refused.code() != q_error_cyclic_network) throw;
        in_.fail("adding the link %s --> %s creates a directed cycle", name.c_str(), node_name(child));
    }
}

// states -> NUMBER. The node with that name is created where it is named for the first time.
node& old_dialect_parser::parse_states(const std::string& name, std::size_t line) {
    const int32_t count = truncate(in_.expect_number());
    if (node* const known = target_.names.find(target_, name.c_str())) {
        if (static_cast<std::size_t>(count) != known->state_count)
            in_.fail("number of states (%s) does not match previous usage (line %s)",
                     std::to_string(count).c_str(), std::to_string(lines_.at(known).first).c_str());
        return *known;
    }
    node& created = create_node(target_, q_category_chance, q_kind_discrete);
    set_node_name(created, name.c_str());
    set_state_count(created, static_cast<std::size_t>(count));
    lines_[&created] = {line, 0};
    return created;
}

void old_dialect_parser::require_all_defined() {
    for (node* named = target_.oldest; named != nullptr; named = named->newer)
        if (const occurrences& at = lines_.at(named); at.definition == 0)
            in_.fail("node `%s' (used at line %s) has not been defined", node_name(*named),
                     std::to_string(at.first).c_str());
}

bool begins_as_old_dialect(net_lexer& lexer) {
    for (const token expected : {token_name, token_string, token_number, token_number, token_number})
        if (lexer.next() != expected) return false;
    return true;
}

}  // namespace

bool is_old_dialect(std::string_view source) { return begins_as(source, begins_as_old_dialect); }

void parse_old_dialect(net_reader& in, domain& target) { old_dialect_parser(in, target).parse(); }

}  // namespace quarn
