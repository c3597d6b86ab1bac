#include "expression.h"

#include <algorithm>
#include <limits>

#include "errors.h"

using namespace quarn;

q_expression::~q_expression() {
    for (expression* at = this; at != this || !arguments.empty();) {
        if (!at->arguments.empty()) {
            at = at->arguments[at->arguments.size() - 1];
            continue;
        }
        expression* const leaf = std::exchange(at, at->parent);
        at->arguments.erase(leaf->place);
        delete leaf;
    }
}

namespace quarn {

owned_expression new_number(double number) {
    constexpr double infinite = std::numeric_limits<double>::max();
    auto made = std::make_unique<expression>(q_operator_number);
    made->number = std::clamp(number, -infinite, infinite);
    return made;
}

owned_expression new_label(const char* label) {
    auto made = std::make_unique<expression>(q_operator_label);
    made->label = duplicate_string(label);
    return made;
}

owned_expression new_reference(q_node& node) {
    auto made = std::make_unique<expression>(q_operator_node);
    made->node = &node;
    return made;
}

owned_expression new_boolean(bool flag) {
    auto made = std::make_unique<expression>(q_operator_boolean);
    made->flag = flag;
    return made;
}

namespace {

// There must be room for it.
void attach(expression& above, expression& argument) noexcept {
    argument.parent = &above;
    argument.place = above.arguments.size();
    above.arguments.append(&argument);
}

}  // namespace

owned_expression new_composite(q_operator_t op, std::span<expression* const> arguments) {
    auto made = std::make_unique<expression>(op);
    made->arguments.reserve(arguments.size());
    for (expression* argument : arguments) attach(*made, *argument);
    if (op == q_operator_if) made->typed_by = arguments[1]->typed_by;
    return made;
}

namespace {

// One node of a tree without its arguments, but with room for them.
owned_expression copy_alone(const expression& original) {
    auto copy = std::make_unique<expression>(original.op);
    copy->number = original.number;
    copy->flag = original.flag;
    copy->label = duplicate_string(original.label.get());
    copy->node = original.node;
    copy->arguments.reserve(original.arguments.size());
    return copy;
}

bool is_first_branch(const expression& asked) noexcept {
    return asked.parent != nullptr && asked.parent->op == q_operator_if && asked.place == 1;
}

// Those whose type is that of the given one, which is no `if`.
void settle_types_above(const expression& settled) noexcept {
    for (const expression* at = &settled; is_first_branch(*at); at = at->parent)
        at->parent->typed_by = &settled;
}

}  // namespace

owned_expression clone(const expression& original) {
    owned_expression root = copy_alone(original);
    const expression* last = &original;
    expression* last_copy = root.get();
    while (const expression* const next = next_in_tree(*last, original)) {
        for (; last != next->parent; last = last->parent) last_copy = last_copy->parent;
        owned_expression copy = copy_alone(*next);
        attach(*last_copy, *copy);
        if (copy->op != q_operator_if) settle_types_above(*copy);
        last_copy = copy.release();
        last = next;
    }
    return root;
}

const expression* next_in_tree(const expression& from, const expression& root) noexcept {
    if (!from.arguments.empty()) return from.arguments[0];
    for (const expression* at = &from; at != &root; at = at->parent)
        if (const expression* sibling = at->parent->arguments.array()[at->place + 1]) return sibling;
    return nullptr;
}

}  // namespace quarn
