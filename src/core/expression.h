// An expression: a tree of operators over constants and references to nodes.
//
// Every tree knows its parent, so that walks need neither recursion nor memory: no tree is too deep to be deleted.
#pragma once

#include <memory>
#include <span>
#include <utility>

#include "allocation.h"
#include "handle_list.h"
#include "quarn.h"

struct q_expression {
    explicit q_expression(q_operator_t of) noexcept : op(of), typed_by(this) {}
    ~q_expression();
    q_expression(const q_expression&) = delete;
    q_expression& operator=(const q_expression&) = delete;

    bool is_composite() const noexcept { return op < q_operator_number; }
    bool is_reference() const noexcept { return op == q_operator_node; }
    // Whether something else will delete it.
    bool is_owned() const noexcept { return parent != nullptr || is_in_model; }

    q_operator_t op;
    double number = 0;                           // of a number constant; finite
    bool flag = false;                           // of a boolean constant
    quarn::text label;                           // of a label constant
    q_node* node = nullptr;                      // of a reference; not owned
    quarn::handle_list<q_expression> arguments;  // of a composite; owned

    const q_expression*
        typed_by;  // its type is that of this one: of an `if`, below in its first branch; else itself
    q_expression* parent = nullptr;  // whose argument it is
    std::size_t place = 0;           // its position there
    bool is_in_model = false;
};

namespace quarn {

using expression = ::q_expression;
using owned_expression = std::unique_ptr<expression>;

// Leaves and composites. A composite takes the arguments over once nothing can fail any more; they must not be owned.
owned_expression new_number(double number);
owned_expression new_label(const char* label);
owned_expression new_reference(q_node& node);
owned_expression new_boolean(bool flag);
owned_expression new_composite(q_operator_t op, std::span<expression* const> arguments);
owned_expression clone(const expression& original);

// The next one in the order in which operators stand before their arguments; null at the end of the tree.
const expression* next_in_tree(const expression& from, const expression& root) noexcept;
inline expression* next_in_tree(expression& from, const expression& root) noexcept {
    return const_cast<expression*>(next_in_tree(std::as_const(from), root));
}

}  // namespace quarn
