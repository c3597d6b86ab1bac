// Any bytes as an expression: a tree that reads back equal when it is printed comes out, or an error was reported.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "expression_parser.h"
#include "expression_printer.h"
#include "expression_types.h"

namespace {

using namespace quarn;

void require_sound(bool condition) {
    if (!condition) std::abort();
}

// Nodes for all types of references, and names with a meaning of their own.
struct network {
    network() {
        add(q_kind_discrete, "label");
        q_node_set_subtype(add(q_kind_discrete, "truth"), q_subtype_boolean);
        q_node_set_subtype(add(q_kind_discrete, "count"), q_subtype_number);
        q_node_set_subtype(add(q_kind_discrete, "range"), q_subtype_interval);
        add(q_kind_discrete, "true");
        add(q_kind_continuous, "real");
        add(q_kind_other, "value");
    }
    network(const network&) = delete;
    network& operator=(const network&) = delete;
    ~network() { q_domain_delete(domain); }

    q_node_t add(q_kind_t kind, const char* name) const {
        const q_category_t category = kind == q_kind_other ? q_category_function : q_category_chance;
        q_node_t added = q_domain_new_node(domain, category, kind);
        require_sound(q_node_set_name(added, name) == q_error_none);
        if (kind == q_kind_discrete) q_node_set_number_of_states(added, 2);
        return added;
    }

    q_domain_t domain = q_domain_new();
};

void check(const expression& tree) {
    for (const expression* at = &tree; at != nullptr; at = next_in_tree(*at, tree)) {
        require_sound(at->is_composite() == is_operator(at->op));
        require_sound(at->is_composite() || at->arguments.empty());
        if (at->is_composite()) require_arguments(at->op, {at->arguments.begin(), at->arguments.end()});
        for (std::size_t i = 0; i < at->arguments.size(); ++i)
            require_sound(at->arguments[i]->parent == at && at->arguments[i]->place == i);
        require_sound(at->op != q_operator_label || at->label != nullptr);
        require_sound(at->op != q_operator_number || std::isfinite(at->number));
    }
}

// Numbers are printed with eight digits.
bool are_equal(const expression& a, const expression& b) {
    switch (a.op) {
    case q_operator_number: return std::abs(a.number - b.number) <= 1e-7 * std::abs(a.number);
    case q_operator_label: return std::strcmp(a.label.get(), b.label.get()) == 0;
    default: return a.node == b.node && a.flag == b.flag && a.arguments.size() == b.arguments.size();
    }
}

void require_equal(const expression& first, const expression& second) {
    const expression *a = &first, *b = &second;
    while (a != nullptr && b != nullptr) {
        require_sound(a->op == b->op && are_equal(*a, *b));
        a = next_in_tree(*a, first);
        b = next_in_tree(*b, second);
    }
    require_sound(a == b);
}

void read(std::string_view text, position_unit unit, domain& target) {
    parse_reports reports(nullptr, nullptr);
    owned_expression parsed;
    try {
        scanner in(text, unit, reports);
        parsed = parse_whole_expression(in, target);
    } catch (const reported_failure&) {
        require_sound(reports.error_count() > 0);
        return;
    }
    require_sound(reports.error_count() == 0);
    check(*parsed);
    const std::string printed = print(*parsed);
    scanner again(printed, unit, reports);
    require_equal(*parsed, *parse_whole_expression(again, target));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const network small;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    read(text, position_unit::line, *small.domain);
    read(text, position_unit::character, *small.domain);
    return 0;
}
