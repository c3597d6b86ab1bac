#include "expression_printer.h"

#include <cmath>
#include <utility>

#include "node.h"
#include "number_text.h"
#include "operators.h"
#include "quoted_text.h"

namespace quarn {
namespace {

// What the grammar takes in a place, each including the next. A sign can only be first in a sum.
enum class level { expression, sum, term, power, factor };

bool is_negation(const expression& tree) noexcept { return tree.op == q_operator_negate; }

level level_of(q_operator_t op) noexcept {
    switch (op) {
    case q_operator_add:
    case q_operator_subtract:
    case q_operator_negate: return level::sum;
    case q_operator_multiply:
    case q_operator_divide: return level::term;
    case q_operator_power: return level::power;
    default: return row_of(op).written == notation::infix ? level::expression : level::factor;
    }
}

// What an operator takes as its argument at that place.
level level_asked(q_operator_t op, std::size_t place) noexcept {
    const bool first = place == 0;
    switch (op) {
    case q_operator_add:
    case q_operator_subtract: return first ? level::sum : level::term;
    case q_operator_negate: return level::term;
    case q_operator_multiply:
    case q_operator_divide: return first ? level::term : level::power;
    case q_operator_power: return first ? level::factor : level::power;
    default: return row_of(op).written == notation::infix ? level::sum : level::expression;
    }
}

class printer {
public:
    explicit printer(const expression& root) noexcept : root_(&root) {}

    std::string print() {
        const expression* at = enter(root_);
        while (at != root_) {
            const expression* const above = at->parent;
            if (at->place + 1 < above->arguments.size()) {
                add_separator(above->op);
                at = enter(above->arguments[at->place + 1]);
            } else {
                leave(*above);
                at = above;
            }
        }
        return std::move(text_);
    }

private:
    bool is_parenthesised(const expression& tree, level of) const noexcept {
        return &tree != root_ && of < level_asked(tree.parent->op, tree.place);
    }

    // Prints all down to the first leaf, which is returned.
    const expression* enter(const expression* at) {
        for (;; at = at->arguments[0]) {
            if (add_negated_number(*at)) return at;
            if (!at->is_composite()) {
                add_leaf(*at);
                return at;
            }
            if (is_parenthesised(*at, level_of(at->op))) text_ += '(';
            const operator_row& row = row_of(at->op);
            if (row.written != notation::infix) text_ += row.name;
            if (row.written == notation::function) text_ += '(';
            if (at->arguments.empty()) {
                leave(*at);
                return at;
            }
        }
    }

    void leave(const expression& tree) {
        if (row_of(tree.op).written == notation::function) text_ += ')';
        if (is_parenthesised(tree, level_of(tree.op))) text_ += ')';
    }

    void add_separator(q_operator_t op) {
        const operator_row& row = row_of(op);
        if (row.written == notation::function) {
            text_ += ", ";
        } else {
            text_ += ' ';
            text_ += row.name;
            text_ += ' ';
        }
    }

    void add_leaf(const expression& leaf) {
        switch (leaf.op) {
        case q_operator_number: return add_number(leaf, leaf.number);
        case q_operator_label: return append_quoted(text_, leaf.label.get());
        case q_operator_node: text_ += node_name(*leaf.node); return;
        default: text_ += leaf.flag ? "true" : "false"; return;
        }
    }

    // A number in place of a tree.
    void add_number(const expression& replaced, double number) {
        const bool parenthesised =
            is_parenthesised(replaced, std::signbit(number) ? level::sum : level::factor);
        if (parenthesised) text_ += '(';
        text_ += number_text::with_infinities(number).view();
        if (parenthesised) text_ += ')';
    }

    // Whether the tree is a number, negated any number of times. Only the outermost negation looks.
    bool add_negated_number(const expression& tree) {
        if (!is_negation(tree) || (&tree != root_ && is_negation(*tree.parent))) return false;
        bool negative = false;
        const expression* at = &tree;
        for (; is_negation(*at); at = at->arguments[0]) negative = !negative;
        if (at->op != q_operator_number) return false;
        add_number(tree, negative ? -at->number : at->number);
        return true;
    }

    const expression* root_;
    std::string text_;
};

}  // namespace

std::string print(const expression& tree) { return printer(tree).print(); }

}  // namespace quarn
