// Expressions for tests: short forms to build them, random ones of any type, and whether two are equal.
#pragma once
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <sstream>
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

// The number of a node in creation order.
inline std::size_t number_of(q_node_t node) {
    std::size_t number = 0;
    for (q_node_t older = q_node_get_next(node); older != nullptr; older = q_node_get_next(older)) ++number;
    return number;
}

// All that there is in a tree, in some order; numbers to their eighth significant digit.
inline std::string contents_of(q_expression_t tree) {
    std::ostringstream text;
    for (std::vector<q_expression_t> open{tree}; !open.empty();) {
        q_expression_t at = open.back();
        open.pop_back();
        if (at == nullptr) return "none";
        const q_operator_t op = q_expression_get_operator(at);
        text << op << ' ';
        if (op == q_operator_number) text << eight_digits(q_expression_get_number(at));
        if (op == q_operator_label) text << q_expression_get_label(at);
        if (op == q_operator_node) text << number_of(q_expression_get_node(at));
        if (op == q_operator_boolean) text << q_expression_get_boolean(at);
        const q_expression_t* arguments = op < q_operator_number ? q_expression_get_arguments(at) : nullptr;
        for (; arguments != nullptr && *arguments != nullptr; ++arguments) open.push_back(*arguments);
        text << '\n' << open.size() << '\n';
    }
    return text.str();
}
inline bool equal(q_expression_t one, q_expression_t other) { return contents_of(one) == contents_of(other); }

enum class yields { number, boolean, label, distribution };

// What operators take and what they refuse, a word for each list of arguments; "-" is the empty one. Letters: n, b, l, d:
// any expression of the type; p: a boolean one with a probability in it; L, B, N, I, F: references to a label, boolean,
// numbered, interval node and to a function; X: to any other node.
struct signature {
    yields result;
    std::vector<q_operator_t> operators;
    const char *taken, *refused;
};
// clang-format off
inline const std::vector<signature> signatures{
    {yields::distribution,
     {q_operator_normal, q_operator_uniform, q_operator_binomial, q_operator_negative_binomial},
     "nn NI XF", "- n nnn bn nl dn nL"},
    {yields::distribution, {q_operator_log_normal, q_operator_gamma, q_operator_weibull}, "nn nnn", "n nnnn nnb"},
    {yields::distribution, {q_operator_beta}, "nn nnnn", "n nnn nnnnn nnl nnnl"},
    {yields::distribution, {q_operator_exponential}, "n nn", "- nnn"},
    {yields::distribution, {q_operator_poisson, q_operator_geometric}, "n X", "- nn b L d"},
    {yields::distribution, {q_operator_triangular}, "nnn", "nn nnnn"},
    {yields::distribution, {q_operator_pert}, "nnn nnnn", "nn nnnnn"},
    {yields::distribution, {q_operator_distribution}, "n XnN", "- nb d L"},
    {yields::distribution, {q_operator_noisy_or}, "bn bnBN", "- b bnb nb bnnb"},
    {yields::distribution, {q_operator_truncate}, "dn nd ndn", "d nn dnn nnd dd ndd nnn bd ndnn"},
    {yields::distribution, {q_operator_aggregate}, "dd Nd dX NI dn nn", "d dL Bd dl ddd"},
    {yields::number, {q_operator_probability}, "b B", "- n l L p bb"},
    {yields::number, {q_operator_variance}, "N I F X", "- n L B d NN"},
    {yields::number, {q_operator_quantile}, "Nn XN", "N nn Ln Nb Nnn"},
    {yields::number, {q_operator_min, q_operator_max}, "n nn XnN", "- nb d L"},
    {yields::number,
     {q_operator_log, q_operator_log2, q_operator_log10, q_operator_exp, q_operator_sin, q_operator_cos,
      q_operator_tan, q_operator_sinh, q_operator_cosh, q_operator_tanh, q_operator_sqrt, q_operator_abs,
      q_operator_floor, q_operator_ceil},
     "n X", "- nn b L d"},
    {yields::number, {q_operator_negate}, "n X", "- nn b L d"},
    {yields::number,
     {q_operator_mod, q_operator_add, q_operator_subtract, q_operator_multiply, q_operator_divide,
      q_operator_power},
     "nn NF", "n nnn nb ll bb dd"},
    {yields::number, {q_operator_state_index}, "L B N I", "- n l X F LL"},
    {yields::number, {q_operator_if}, "bnn pnn", "bn bnb nnn bdd bnnn"},
    {yields::boolean, {q_operator_if}, "bbb bbB", "bbn"},
    {yields::label, {q_operator_if}, "bll plL", "bln"},
    {yields::boolean, {q_operator_and, q_operator_or}, "- b bbb pbB", "n bn L"},
    {yields::boolean, {q_operator_not}, "b p", "- n bb"},
    {yields::boolean, {q_operator_equals, q_operator_not_equals}, "nn nN bp lL", "n nb dd nnn"},
    {yields::boolean,
     {q_operator_less_than, q_operator_greater_than, q_operator_less_than_or_equals,
      q_operator_greater_than_or_equals},
     "nn NF", "n nnn nb ll bb dd"},
};
// clang-format on
inline char letter_of(q_node_t node) {
    if (q_node_get_kind(node) == q_kind_discrete) return "LBNI"[q_node_get_subtype(node) - q_subtype_label];
    return q_node_get_category(node) == q_category_function ? 'F' : 'X';
}

// Random well-typed trees of all operators over the given nodes, all of which live longer. Numbers are never negated as
// such: no text means that.
struct tree_generator {
    std::mt19937& random;

    tree_generator(std::mt19937& of, const std::vector<q_node_t>& nodes) : random(of) {
        for (q_node_t node : nodes)
            for (char list : {letter_of(node), "lbnnnn"[std::string_view("LBNIFX").find(letter_of(node))]})
                nodes_[list].push_back(node);
    }

    // At most so many levels of operators, but for a distribution, which is one at least. The caller owns the tree.
    q_expression_t make(yields type, int depth) {
        const bool basic = depth <= 0 && type == yields::distribution;
        if (type != yields::distribution && (depth <= 0 || below(5) == 0)) return leaf("nbl"[int(type)]);
        std::vector<const signature*> fitting;
        for (const signature& row : signatures)
            if (row.result == type && !(basic && std::strchr(row.taken, 'd') != nullptr))
                fitting.push_back(&row);
        const signature& row = *fitting[below(fitting.size())];
        // Half of them arithmetic, which is where the parentheses are.
        if (type == yields::number && below(2) == 0) {
            const auto op = q_operator_t(q_operator_add + below(6));
            return made(op, op == q_operator_negate ? "n" : "nn", depth - 1);
        }
        std::istringstream words(row.taken);
        std::vector<std::string> taken;
        for (std::string word; words >> word;) taken.push_back(word);
        return made(row.operators[below(row.operators.size())], taken[below(taken.size())], depth - 1);
    }

    double any_number() {
        using limits = std::numeric_limits<double>;
        constexpr double special[] = {
            0,      1,         2,         0.5, 10,      1e-4,   1e-5,          99999999,      1e300,
            1e-300, 999999995, 123456789, 1e8, 1.0 / 3, 5e-324, limits::min(), limits::max(), 1.7976931e308};
        double value = special[below(std::size(special))];
        if (below(2) == 0) value = double(below(100));
        if (below(4) == 0) value = std::generate_canonical<double, 53>(random) * 10;
        if (below(8) == 0) value = std::ldexp(1.0 + double(random()) / 4294967296.0, int(below(2098)) - 1074);
        return below(3) == 0 ? -value : value;
    }

    std::string any_label() {
        constexpr std::string_view hostile[] = {
            "",    "\"",        "\\",           "\\\n", "\n",    "\r\t",  "\0017",          "\0018",
            "\1x", "\377\3770", "% no comment", "true", "a, b)", "\\101", "'?\a\b\f\v\177", "infinity"};
        std::string text(hostile[below(std::size(hostile))]);
        if (below(2) == 0) text = "label " + std::to_string(below(4));
        if (below(4) == 0)
            for (std::size_t i = below(8); i > 0; --i)
                text.insert(text.begin() + std::ptrdiff_t(below(text.size() + 1)), char(1 + below(255)));
        return text;
    }

private:
    std::size_t below(std::size_t bound) { return random() % bound; }

    q_expression_t leaf(char letter) {
        const std::vector<q_node_t>& fitting = nodes_[letter];
        if (!fitting.empty() && below(2) == 0) return reference(fitting[below(fitting.size())]);
        if (letter == 'b') return boolean(below(2) == 0);
        return letter == 'l' ? label(any_label().c_str()) : number(any_number());
    }
    q_expression_t made(q_operator_t op, const std::string& word, int depth) {
        const bool refers =
            op == q_operator_variance || op == q_operator_quantile || op == q_operator_state_index;
        const bool nests = op == q_operator_probability && in_probability_;
        if (nests || (refers && nodes_[word[0]].empty())) return leaf('n');
        in_probability_ |= op == q_operator_probability;
        std::vector<q_expression_t> arguments;
        for (char letter : word) {
            const std::vector<q_node_t>& fitting = nodes_[letter];
            if (std::isupper(letter) != 0 && !fitting.empty())
                arguments.push_back(reference(fitting[below(fitting.size())]));
            else if (letter != '-')
                arguments.push_back(make(type_of(letter), depth));
        }
        in_probability_ &= op != q_operator_probability;
        if (op == q_operator_negate && q_expression_get_operator(arguments[0]) == q_operator_number)
            return arguments[0];
        q_expression_t tree = composite(op, arguments);
        EXPECT_NE(tree, nullptr) << "operator " << op;
        return tree;
    }
    static yields type_of(char letter) {
        return std::strchr("bpB", letter)  ? yields::boolean
               : std::strchr("lL", letter) ? yields::label
               : letter == 'd'             ? yields::distribution
                                           : yields::number;
    }

    std::map<char, std::vector<q_node_t>> nodes_;  // by their letters, and by those of their types
    bool in_probability_ = false;
};
