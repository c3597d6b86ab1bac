#include "expression_types.h"

#include <algorithm>

#include "errors.h"

namespace quarn {
namespace {

using arguments_view = std::span<expression* const>;

bool yields(const expression* tree, value_type type) noexcept { return type_of(*tree) == type; }

bool all_yield(arguments_view arguments, value_type type) noexcept {
    return std::ranges::all_of(arguments, [&](const expression* argument) { return yields(argument, type); });
}

bool are_alike(const expression* a, const expression* b) noexcept {
    return type_of(*a) == type_of(*b) && !yields(a, value_type::distribution);
}

bool is_reference_to_number(const expression* tree) noexcept {
    return tree->is_reference() && yields(tree, value_type::number);
}

bool holds_probability(const expression& tree) noexcept {
    for (const expression* at = &tree; at != nullptr; at = next_in_tree(*at, tree))
        if (at->op == q_operator_probability) return true;
    return false;
}

bool are_causes(arguments_view arguments) noexcept {
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (!yields(arguments[i], i % 2 == 0 ? value_type::boolean : value_type::number)) return false;
    return arguments.size() % 2 == 0;
}

// A bound, a distribution and a bound; one of the bounds may be left out.
bool is_truncation(arguments_view arguments) noexcept {
    const auto is_distribution = [](const expression* a) { return yields(a, value_type::distribution); };
    if (std::ranges::count_if(arguments, is_distribution) != 1) return false;
    if (arguments.size() == 3 && !is_distribution(arguments[1])) return false;
    return std::ranges::all_of(
        arguments, [&](const expression* a) { return is_distribution(a) || yields(a, value_type::number); });
}

bool are_parts(arguments_view arguments) noexcept {
    return std::ranges::all_of(arguments, [](const expression* part) {
        return yields(part, value_type::distribution) || yields(part, value_type::number);
    });
}

bool takes(signature asked, arguments_view arguments) noexcept {
    switch (asked) {
    case signature::numbers: return all_yield(arguments, value_type::number);
    case signature::number_pairs:
        return arguments.size() % 2 == 0 && all_yield(arguments, value_type::number);
    case signature::booleans: return all_yield(arguments, value_type::boolean);
    case signature::alike: return are_alike(arguments[0], arguments[1]);
    case signature::choice:
        return yields(arguments[0], value_type::boolean) && are_alike(arguments[1], arguments[2]);
    case signature::condition:
        return yields(arguments[0], value_type::boolean) && !holds_probability(*arguments[0]);
    case signature::numeric_node: return is_reference_to_number(arguments[0]);
    case signature::numeric_node_level:
        return is_reference_to_number(arguments[0]) && yields(arguments[1], value_type::number);
    case signature::discrete_node: return arguments[0]->is_reference() && arguments[0]->node->is_discrete();
    case signature::causes: return are_causes(arguments);
    case signature::truncated: return is_truncation(arguments);
    case signature::compound: return are_parts(arguments);
    }
    return false;
}

}  // namespace

value_type type_of(const node& referred) noexcept {
    if (!referred.is_discrete() || referred.has_values()) return value_type::number;
    return referred.subtype == q_subtype_boolean ? value_type::boolean : value_type::label;
}

value_type type_of(const expression& tree) noexcept {
    const expression& source = *tree.typed_by;
    switch (source.op) {
    case q_operator_number: return value_type::number;
    case q_operator_label: return value_type::label;
    case q_operator_boolean: return value_type::boolean;
    case q_operator_node: return type_of(*source.node);
    default: return row_of(source.op).gives;
    }
}

void require_arguments(q_operator_t op, std::span<expression* const> arguments) {
    const operator_row& row = row_of(op);
    require(arguments.size() >= row.fewest && arguments.size() <= row.most && takes(row.takes, arguments),
            q_error_invalid_expression);
}

void require_suitable(const node& owner, const expression& tree) {
    const value_type type = type_of(tree);
    const bool is_distribution = type == value_type::distribution;
    require(is_distribution ? owner.is(q_category_chance) : type == type_of(owner),
            q_error_invalid_expression);
}

void require_still_suitable(const node& owner, const expression& tree) {
    for (const expression* at = &tree; at != nullptr; at = next_in_tree(*at, tree))
        if (at->is_composite()) require_arguments(at->op, {at->arguments.begin(), at->arguments.size()});
    require_suitable(owner, tree);
}

}  // namespace quarn
