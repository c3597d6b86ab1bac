// Expressions for tests: short forms to build them, random ones of any type, and whether two are equal.
#pragma once
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

// A tree that is deleted at the end of its scope.
struct tree_deleter {
    void operator()(q_expression_t tree) const { q_expression_delete(tree); }
};
using owned_tree = std::unique_ptr<q_expression, tree_deleter>;

// A composite, which takes the arguments over.
inline q_expression_t composite(q_operator_t op, std::vector<q_expression_t> arguments) {
    arguments.push_back(nullptr);
    return q_expression_make_composite(op, arguments.data());
}
inline q_expression_t number(double value) { return q_expression_make_number(value); }
inline q_expression_t label(const char* text) { return q_expression_make_label(text); }
inline q_expression_t boolean(bool flag) { return q_expression_make_boolean(flag); }
inline q_expression_t reference(q_node_t node) { return q_expression_make_node(node); }

// A number with eight significant digits, as text.
inline std::string eight_digits(double value) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.begin(), text.end(), value, std::chars_format::general, 8).ptr};
}

// Whether two trees are the same but for numbers beyond their eighth significant digit.
inline bool equal(q_expression_t one, q_expression_t other) {
    std::vector<std::pair<q_expression_t, q_expression_t>> open{{one, other}};
    while (!open.empty()) {
        const auto [a, b] = open.back();
        open.pop_back();
        if (a == nullptr || b == nullptr || q_expression_get_operator(a) != q_expression_get_operator(b))
            return false;
        const q_expression_t *left = nullptr, *right = nullptr;
        switch (q_expression_get_operator(a)) {
        case q_operator_number:
            if (eight_digits(q_expression_get_number(a)) != eight_digits(q_expression_get_number(b)))
                return false;
            break;
        case q_operator_label:
            if (std::strcmp(q_expression_get_label(a), q_expression_get_label(b)) != 0) return false;
            break;
        case q_operator_node:
            if (q_expression_get_node(a) != q_expression_get_node(b)) return false;
            break;
        case q_operator_boolean:
            if (q_expression_get_boolean(a) != q_expression_get_boolean(b)) return false;
            break;
        default:
            left = q_expression_get_arguments(a), right = q_expression_get_arguments(b);
            for (; *left != nullptr && *right != nullptr; ++left, ++right) open.emplace_back(*left, *right);
            if (*left != *right) return false;
        }
    }
    return true;
}

enum class yields { number, boolean, label, distribution };

// Random well-typed trees of all operators over the given nodes, all of which live longer. Numbers are never negated as
// such: no text means that.
struct tree_generator {
    std::mt19937& random;
    bool exact_numbers = false;  // with at most eight significant digits, or infinite

    tree_generator(std::mt19937& of, const std::vector<q_node_t>& nodes) : random(of) {
        for (q_node_t node : nodes) {
            const bool is_discrete = q_node_get_kind(node) == q_kind_discrete;
            const q_subtype_t subtype = is_discrete ? q_node_get_subtype(node) : q_subtype_number;
            (subtype == q_subtype_label     ? labels_
             : subtype == q_subtype_boolean ? booleans_
                                            : numbers_)
                .push_back(node);
            if (is_discrete) discrete_.push_back(node);
        }
    }

    // At most so many levels of operators, but for a distribution, which is one at least. The caller owns the tree.
    q_expression_t make(yields type, int depth) {
        switch (type) {
        case yields::number: return is_leaf(depth) ? number_leaf() : numeric(depth - 1);
        case yields::boolean: return is_leaf(depth) ? boolean_leaf() : logical(depth - 1);
        case yields::label: return is_leaf(depth) ? label_leaf() : choice(yields::label, depth - 1);
        default: return distribution(depth - 1);
        }
    }

    double any_number() {
        using limits = std::numeric_limits<double>;
        // clang-format off
        constexpr double special[] = {
            0, 1, 2, 0.5, 10, 1e-4, 1e-5, 99999999, 999999995, 123456789, 1e8, 1.0 / 3, 1e-300, 1e300,
            limits::denorm_min(), limits::min(), limits::max(), 1.7976931e308};
        // clang-format on
        double value = special[below(std::size(special))];
        if (below(2) == 0) value = double(below(100));
        if (below(4) == 0) value = std::generate_canonical<double, 53>(random) * 10;
        if (below(8) == 0) value = std::ldexp(1.0 + double(random()) / 4294967296.0, int(below(2098)) - 1074);
        if (exact_numbers && value != limits::max()) {
            const std::string text = eight_digits(value);
            std::from_chars(text.data(), text.data() + text.size(), value);
        }
        return below(3) == 0 ? -value : value;
    }

    std::string any_label() {
        // clang-format off
        constexpr std::string_view hostile[] = {
            "", "\"", "\\", "\\\n", "\n", "\r\t", "\0017", "\0018", "\1x", "\377\3770", "% no comment", "true",
            "a, b)", "\\101", "'?\a\b\f\v\177", "infinity"};
        // clang-format on
        std::string text(hostile[below(std::size(hostile))]);
        if (below(2) == 0) text = "label " + std::to_string(below(4));
        if (below(4) == 0)
            for (std::size_t i = below(8); i > 0; --i)
                text.insert(text.begin() + std::ptrdiff_t(below(text.size() + 1)), char(1 + below(255)));
        return text;
    }

private:
    std::size_t below(std::size_t bound) { return random() % bound; }
    bool is_leaf(int depth) { return depth <= 0 || below(5) == 0; }
    q_node_t any_of(const std::vector<q_node_t>& nodes) { return nodes[below(nodes.size())]; }
    bool refers_to(const std::vector<q_node_t>& nodes) { return !nodes.empty() && below(2) == 0; }

    q_expression_t made(q_operator_t op, std::vector<q_expression_t> arguments) {
        q_expression_t tree = composite(op, std::move(arguments));
        EXPECT_NE(tree, nullptr) << "operator " << op;
        return tree;
    }
    std::vector<q_expression_t> several(yields type, std::size_t count, int depth) {
        std::vector<q_expression_t> trees;
        while (trees.size() < count) trees.push_back(make(type, depth));
        return trees;
    }

    q_expression_t number_leaf() {
        return refers_to(numbers_) ? reference(any_of(numbers_)) : number(any_number());
    }
    q_expression_t boolean_leaf() {
        return refers_to(booleans_) ? reference(any_of(booleans_)) : boolean(below(2) == 0);
    }
    q_expression_t label_leaf() {
        return refers_to(labels_) ? reference(any_of(labels_)) : label(any_label().c_str());
    }

    q_expression_t choice(yields type, int depth) {
        q_expression_t condition = make(yields::boolean, depth), first = make(type, depth);
        return made(q_operator_if, {condition, first, make(type, depth)});
    }

    q_expression_t negation(int depth) {
        q_expression_t negated = make(yields::number, depth);
        if (q_expression_get_operator(negated) != q_operator_number)
            return made(q_operator_negate, {negated});
        return negated;
    }

    q_expression_t probability(int depth) {
        if (in_probability_) return number_leaf();
        in_probability_ = true;
        q_expression_t condition = make(yields::boolean, depth);
        in_probability_ = false;
        return made(q_operator_probability, {condition});
    }

    q_expression_t numeric(int depth) {
        const auto numbers = [&](std::size_t count) { return several(yields::number, count, depth); };
        // Half of them arithmetic, which is where the parentheses are.
        const auto op =
            q_operator_t(below(2) == 0 ? q_operator_add + below(6) : q_operator_probability + below(31));
        switch (op) {
        case q_operator_probability: return probability(depth);
        case q_operator_variance:
            return numbers_.empty() ? number_leaf() : made(op, {reference(any_of(numbers_))});
        case q_operator_quantile:
            if (numbers_.empty()) return number_leaf();
            return made(op, {reference(any_of(numbers_)), make(yields::number, depth)});
        case q_operator_min:
        case q_operator_max: return made(op, numbers(1 + below(4)));
        case q_operator_mod:
        case q_operator_add:
        case q_operator_subtract:
        case q_operator_multiply:
        case q_operator_divide:
        case q_operator_power: return made(op, numbers(2));
        case q_operator_if: return choice(yields::number, depth);
        case q_operator_negate: return negation(depth);
        case q_operator_and:
        case q_operator_or:
        case q_operator_not:
        case q_operator_state_index:
            if (discrete_.empty()) return number_leaf();
            return made(q_operator_state_index, {reference(any_of(discrete_))});
        default: return made(op, numbers(1));
        }
    }

    q_expression_t logical(int depth) {
        switch (below(6)) {
        case 0: return made(q_operator_and, several(yields::boolean, below(4), depth));
        case 1: return made(q_operator_or, several(yields::boolean, below(4), depth));
        case 2: return made(q_operator_not, {make(yields::boolean, depth)});
        case 3: return choice(yields::boolean, depth);
        default: break;
        }
        const auto op = q_operator_t(q_operator_equals + below(6));
        const bool any_type = op == q_operator_equals || op == q_operator_not_equals;
        return made(op, several(any_type ? yields(below(3)) : yields::number, 2, depth));
    }

    q_expression_t distribution(int depth) {
        // How many numbers each takes; those of Beta come in pairs.
        constexpr std::array<std::array<std::size_t, 2>, 14> counts{{{2, 2},
                                                                     {2, 3},
                                                                     {2, 4},
                                                                     {2, 3},
                                                                     {1, 2},
                                                                     {2, 3},
                                                                     {2, 2},
                                                                     {3, 3},
                                                                     {3, 4},
                                                                     {2, 2},
                                                                     {1, 1},
                                                                     {2, 2},
                                                                     {1, 1},
                                                                     {1, 6}}};
        const std::size_t which = below(depth > 0 ? 17 : counts.size());
        const auto op = q_operator_t(q_operator_normal + which);
        std::vector<q_expression_t> arguments;
        switch (op) {
        case q_operator_noisy_or:
            for (std::size_t pairs = 1 + below(3); pairs > 0; --pairs)
                for (yields type : {yields::boolean, yields::number}) arguments.push_back(make(type, depth));
            break;
        case q_operator_truncate:
            arguments.push_back(distribution(depth - 1));
            if (const std::size_t bounds = 1 + below(3); bounds != 3) {
                const auto place = bounds == 1 ? arguments.begin() : arguments.end();
                arguments.insert(place, make(yields::number, depth));
            } else {
                arguments.insert(arguments.begin(), make(yields::number, depth));
                arguments.push_back(make(yields::number, depth));
            }
            break;
        case q_operator_aggregate:
            for (int part = 0; part < 2; ++part)
                arguments.push_back(make(below(2) == 0 ? yields::number : yields::distribution, depth));
            break;
        default: {
            const auto [fewest, most] = counts[which];
            std::size_t count = fewest + below(most - fewest + 1);
            if (op == q_operator_beta) count = 2 * (count / 2);
            arguments = several(yields::number, count, depth);
        }
        }
        return made(op, std::move(arguments));
    }

    std::vector<q_node_t> numbers_, booleans_, labels_, discrete_;
    bool in_probability_ = false;
};
