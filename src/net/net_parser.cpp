#include "net_parser.h"

#include <algorithm>
#include <array>

#include "net_node.h"
#include "net_potential.h"
#include "net_reader.h"

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

    void parse_node_item();
    void parse_discrete();
    void parse_potential() { potentials_.parse(); }
    void parse_net_block();
    void parse_node_size();
    int32_t parse_extent();

    net_reader& in_;
    domain& target_;
    potential_parser potentials_;
};

constexpr std::array<net_parser::item, 4> net_parser::items{{
    {"node", &net_parser::parse_node_item},
    {"discrete", &net_parser::parse_discrete},
    {"potential", &net_parser::parse_potential},
    {"net", &net_parser::parse_net_block},
}};

// network -> { item }
// item    -> node | discrete | potential | net
void net_parser::parse() {
    while (in_.next() != token_end) {
        if (!in_.is_name()) in_.fail("unexpected token");
        const auto known = std::ranges::find(items, in_.text(), &item::keyword);
        if (known == items.end()) in_.fail("unknown object type: %s", in_.text().c_str());
        (this->*known->parse)();
    }
}

// node -> 'node' declaration
void net_parser::parse_node_item() { parse_node(in_, target_, q_category_chance, q_kind_discrete); }

// discrete -> 'discrete' 'node' declaration
void net_parser::parse_discrete() {
    in_.next();
    if (in_.is_name() && (in_.text() == "decision" || in_.text() == "function"))
        in_.fail("unknown object type: %s", in_.text().c_str());
    if (!in_.is_name() || in_.text() != "node")
        in_.fail("keyword `node', `decision', or `function' expected");
    parse_node_item();
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
