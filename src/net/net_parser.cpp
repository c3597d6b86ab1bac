#include "net_parser.h"

#include <algorithm>
#include <array>

#include "net_node.h"
#include "net_potential.h"
#include "net_reader.h"
#include "old_dialect.h"

namespace quarn {
namespace {

class net_parser {
public:
    net_parser(net_reader& in, domain& target) noexcept : in_(in), target_(target), potentials_(in, target) {}

    void parse();

private:
    struct item {
        std::string_view keyword;
        void (net_parser::*parse)();
    };
    static const std::array<item, 4> items;

    void parse_item();
    void parse_discrete();
    void parse_continuous();
    void parse_potential() { potentials_.parse(); }
    void parse_net_block();
    void parse_node_size();
    int32_t parse_extent();

    net_reader& in_;
    domain& target_;
    potential_parser potentials_;
};

constexpr std::array<net_parser::item, 4> net_parser::items{{
    {"discrete", &net_parser::parse_discrete},
    {"continuous", &net_parser::parse_continuous},
    {"potential", &net_parser::parse_potential},
    {"net", &net_parser::parse_net_block},
}};

// What a keyword declares when no kind is said before it.
struct declaration {
    std::string_view keyword;
    q_category_t category;
    q_kind_t kind;
};
constexpr std::array<declaration, 4> declarations{{
    {"node", q_category_chance, q_kind_discrete},
    {"decision", q_category_decision, q_kind_discrete},
    {"utility", q_category_utility, q_kind_other},
    {"function", q_category_function, q_kind_other},
}};

// Null where the last token is no such keyword.
const declaration* find_declaration(const net_reader& in) {
    if (!in.is_name()) return nullptr;
    const auto* const known = std::ranges::find(declarations, in.text(), &declaration::keyword);
    return known != declarations.end() ? known : nullptr;
}

// network -> { item }
void net_parser::parse() {
    while (in_.next() != token_end) parse_item();
}

// item -> ( 'node' | 'decision' | 'utility' | 'function' ) node | discrete | continuous | potential | net
void net_parser::parse_item() {
    if (!in_.is_name()) in_.fail("unexpected token");
    if (const declaration* declared = find_declaration(in_))
        return parse_node(in_, target_, declared->category, declared->kind);
    const auto known = std::ranges::find(items, in_.text(), &item::keyword);
    if (known == items.end()) in_.fail("unknown object type: %s", in_.text().c_str());
    (this->*known->parse)();
}

// discrete -> 'discrete' ( 'node' | 'decision' | 'function' ) node
void net_parser::parse_discrete() {
    in_.next();
    const declaration* const declared = find_declaration(in_);
    if (declared == nullptr || declared->category == q_category_utility)
        in_.fail("keyword `node', `decision', or `function' expected");
    parse_node(in_, target_, declared->category, q_kind_discrete);
}

// continuous -> 'continuous' 'node' node
void net_parser::parse_continuous() {
    in_.next();
    if (!in_.is_name() || in_.text() != "node") in_.fail("keyword `node' expected");
    parse_node(in_, target_, q_category_chance, q_kind_continuous);
}

// net -> 'net' '{' { NAME '=' value ';' } '}'
void net_parser::parse_net_block() {
    in_.expect('{');
    std::string name;
    while (in_.next_attribute(name)) {
        if (name == "node_size") {
            parse_node_size();
        } else {
            const std::string value = in_.expect_string_value(user_attribute_message);
            target_.attributes.set(name.c_str(), value.c_str(), {});
        }
    }
}

// value -> '(' NUMBER NUMBER ')'
void net_parser::parse_node_size() {
    in_.expect('=');
    in_.expect('(');
    target_.node_width = parse_extent();
    target_.node_height = parse_extent();
    in_.expect(')');
    in_.expect(';');
}

int32_t net_parser::parse_extent() {
    const double extent = in_.expect_number();
    if (extent < 0) in_.fail("<number> must be nonnegative");
    return truncate(extent + 0.5);
}

}  // namespace

std::unique_ptr<domain> parse_net(std::string_view source, position_unit unit, parse_reports& reports) {
    net_reader in(source, unit, reports);
    try {
        auto parsed = std::make_unique<domain>();
        if (is_old_dialect(source))
            parse_old_dialect(in, *parsed);
        else
            net_parser(in, *parsed).parse();
        if (reports.error_count() > 0) throw reported_failure(q_error_parse);
        return parsed;
    } catch (const reported_failure&) {
        throw;
    } catch (...) {
        const q_error_t code = code_of_current_exception();
        in.report("API error: %s", error_description(static_cast<uint32_t>(code)));
        throw reported_failure(code);
    }
}

}  // namespace quarn
