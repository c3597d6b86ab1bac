// Expressions: how trees are made and owned, and what their text is.
#include <cctype>
#include <cstdio>
#include <functional>
#include <set>

#include "allocation_faults.h"
#include "expression_trees.h"
#include "scenarios.h"

using namespace scenarios;

namespace {

// Nodes of all types; those whose names are those of operators too can be told by the missing parenthesis.
owned_domain family(const char* last = "cc") {
    owned_domain domain(q_domain_new());
    const char* const names[] = {"label", "truth", "N", "outer.inner", "min"};
    for (const char* name : names) new_chance(domain.get(), name, 2, {}, name[0] == 'm' ? "fo" : "cd");
    const nodes all = nodes_of(domain.get());
    q_node_set_subtype(all[1], q_subtype_boolean);
    q_node_set_subtype(all[2], q_subtype_number);
    q_node_set_subtype(all[3], q_subtype_interval);
    q_node_set_name(new_node(domain.get(), last), "X");
    return domain;
}

// n, b, l: constants; d: a distribution; p: a probability in a condition; L, B, N, I, F, X: references.
q_expression_t argument_for(char letter, const nodes& n) {
    switch (letter) {
    case 'n': return number(0.5);
    case 'b': return boolean(true);
    case 'l': return label("a");
    case 'd': return composite(q_operator_poisson, {number(1)});
    case 'p':
        return composite(q_operator_less_than,
                         {composite(q_operator_probability, {boolean(true)}), number(1)});
    default: return reference(n.at(std::string("LBNIFX").find(letter)));
    }
}

TEST(expressions, operators_take_arguments_of_certain_numbers_and_types) {
    // A word for each list of arguments; "-" is the empty one.
    const struct {
        std::vector<q_operator_t> operators;
        const char *taken, *refused;
    } rows[] = {
        {{q_operator_normal, q_operator_uniform, q_operator_binomial, q_operator_negative_binomial},
         "nn NI XF",
         "- n nnn bn nl dn nL"},
        {{q_operator_log_normal, q_operator_gamma, q_operator_weibull}, "nn nnn", "n nnnn nnb"},
        {{q_operator_beta}, "nn nnnn", "n nnn nnnnn nnl nnnl"},
        {{q_operator_exponential}, "n nn", "- nnn"},
        {{q_operator_triangular}, "nnn", "nn nnnn"},
        {{q_operator_pert}, "nnn nnnn", "nn nnnnn"},
        {{q_operator_distribution, q_operator_min, q_operator_max}, "n XnnnnnnnN", "- nb d L"},
        {{q_operator_noisy_or}, "bn bnBN", "- b bnb nb bnnb"},
        {{q_operator_truncate}, "dn nd ndn", "d nn dnn nnd dd ndd nnn bd ndnn"},
        {{q_operator_aggregate}, "dd Nd dX NI dn nn", "d dL Bd dl ddd"},
        {{q_operator_probability}, "b B", "- n l L p bb"},
        {{q_operator_variance}, "N I F X", "- n L B d NN"},
        {{q_operator_quantile}, "Nn XN", "N nn Ln Nb Nnn"},
        {{q_operator_poisson, q_operator_geometric, q_operator_log, q_operator_log2, q_operator_log10,
          q_operator_exp, q_operator_sin, q_operator_cos, q_operator_tan, q_operator_sinh, q_operator_cosh,
          q_operator_tanh, q_operator_sqrt, q_operator_abs, q_operator_floor, q_operator_ceil,
          q_operator_negate},
         "n X",
         "- nn b L d"},
        {{q_operator_mod, q_operator_add, q_operator_subtract, q_operator_multiply, q_operator_divide,
          q_operator_power, q_operator_less_than, q_operator_greater_than, q_operator_less_than_or_equals,
          q_operator_greater_than_or_equals},
         "nn NF",
         "n nnn nb ll bb dd"},
        {{q_operator_if}, "bnn bbB plL", "bn bnb nnn bdd bnnn"},
        {{q_operator_and, q_operator_or}, "- b pbBbbbbb", "n bn L"},
        {{q_operator_not}, "b p", "- n bb"},
        {{q_operator_state_index}, "L B N I", "- n l X F LL"},
        {{q_operator_equals, q_operator_not_equals}, "nN bp lL", "n nb dd nnn"},
    };
    const owned_domain domain = family();
    const nodes n = nodes_of(domain.get());
    std::set<q_operator_t> tried;
    for (const auto& [operators, taken, refused] : rows)
        for (q_operator_t op : operators)
            for (bool is_taken : {true, false}) {
                tried.insert(op);
                std::istringstream words(is_taken ? taken : refused);
                for (std::string word; words >> word;) {
                    std::vector<q_expression_t> arguments;
                    for (char letter : word)
                        if (letter != '-') arguments.push_back(argument_for(letter, n));
                    const owned_tree made(composite(op, arguments));
                    EXPECT_EQ(outcome(made.get()), is_taken ? q_error_none : q_error_invalid_expression)
                        << op << ' ' << word;
                    const bool holds = made && listed(q_expression_get_arguments(made.get())) == arguments;
                    EXPECT_EQ(holds, is_taken) << op << ' ' << word;
                    for (q_expression_t argument : arguments)
                        EXPECT_EQ(q_expression_delete(argument), is_taken ? q_error_usage : q_error_none);
                }
            }
    EXPECT_EQ(tried.size(), std::size_t(q_operator_number - q_operator_normal));
    for (int op : {-1, 0, 59, 114, 116, 118, 1000}) {
        const owned_tree argument(number(1));
        EXPECT_EQ(outcome(composite(op, {argument.get()})), q_error_usage) << op;
    }
}

std::string text_of(q_expression_t tree) {
    char* const text = q_expression_to_string(tree);
    EXPECT_NE(text, nullptr);
    std::string copy(text == nullptr ? "" : text);
    q_string_delete(text);
    EXPECT_EQ(q_error_code(), q_error_none);
    return copy;
}

TEST(expressions, arguments_belong_to_one_expression) {
    const owned_tree free_one(number(3)), sum(composite(q_operator_add, {number(1), number(2)}));
    const q_expression_t owned = q_expression_get_arguments(sum.get())[1];
    EXPECT_EQ(outcome(composite(q_operator_max, {free_one.get(), owned})), q_error_usage);
    EXPECT_EQ(outcome(composite(q_operator_max, {free_one.get(), free_one.get()})), q_error_usage);
    EXPECT_EQ(q_expression_delete(owned), q_error_usage);
    EXPECT_EQ(text_of(sum.get()), "1 + 2");
    EXPECT_EQ(text_of(owned), "2");
    const owned_tree larger(composite(q_operator_max, {q_expression_clone(owned)}));
    EXPECT_EQ(text_of(larger.get()), "max(2)");
}

TEST(expressions, constants_and_references_hold_what_they_were_made_of) {
    const owned_domain domain = family();
    const double infinity = std::numeric_limits<double>::infinity(),
                 largest = std::numeric_limits<double>::max();
    std::string text = "yes";
    const owned_tree trees[] = {owned_tree(number(-2.5)), owned_tree(label(text.c_str())),
                                owned_tree(reference(node_at(domain.get(), 4))), owned_tree(boolean(7)),
                                owned_tree(composite(q_operator_and, {}))};
    text = "no ";
    for (std::size_t i = 0; i < std::size(trees); ++i) {
        const q_expression_t tree = trees[i].get();
        const q_operator_t op = q_expression_get_operator(tree);
        EXPECT_EQ(op, i < 4 ? q_operator_number + int(i) : int(q_operator_and));
        EXPECT_EQ(q_expression_is_composite(tree), i < 4 ? 0u : 1u);
        const std::pair<q_operator_t, q_status_t> read[] = {
            {q_operator_number, outcome(q_expression_get_number(tree))},
            {q_operator_label, outcome(q_expression_get_label(tree))},
            {q_operator_node, outcome(q_expression_get_node(tree))},
            {q_operator_boolean, outcome(q_expression_get_boolean(tree) < 0 ? -1.0 : 0.0)},
            {q_operator_and, outcome(q_expression_get_arguments(tree))}};
        for (const auto& [right, status] : read)
            EXPECT_EQ(status, right == op ? q_error_none : q_error_usage) << op << ' ' << right;
    }
    EXPECT_EQ(q_expression_get_number(trees[0].get()), -2.5);
    EXPECT_STREQ(q_expression_get_label(trees[1].get()), "yes");
    EXPECT_EQ(q_expression_get_node(trees[2].get()), node_at(domain.get(), 4));
    EXPECT_EQ(q_expression_get_boolean(trees[3].get()), 1);
    EXPECT_EQ(outcome(number(std::nan(""))), q_error_usage);
    for (double sign : {1.0, -1.0})
        EXPECT_EQ(q_expression_get_number(owned_tree(number(sign * infinity)).get()), sign * largest);
}

owned_tree parsed(q_domain_t domain, const std::string& text) {
    return owned_tree(q_domain_parse_expression(domain, text.c_str(), nullptr, nullptr));
}

TEST(expressions, are_printed_with_as_few_parentheses_as_it_takes) {
    const owned_domain domain = family();
    // clang-format off
    const std::pair<const char*, const char*> rows[] = {
        {"(N+1)+2", "N + 1 + 2"}, {"N+(1+2)", "N + (1 + 2)"}, {"(N-1)-2", "N - 1 - 2"},
        {"N-(1-2)", "N - (1 - 2)"}, {"N+(1*2)", "N + 1 * 2"}, {"(N+1)*2", "(N + 1) * 2"},
        {"(N*1)/2", "N * 1 / 2"}, {"N/(1*2)", "N / (1 * 2)"}, {"N^(1^2)", "N ^ 1 ^ 2"},
        {"(N^1)^2", "(N ^ 1) ^ 2"}, {"(N^1)*(2^N)", "N ^ 1 * 2 ^ N"}, {"(N*1)^(2*N)", "(N * 1) ^ (2 * N)"},
        {"-(N^2)", "-N ^ 2"}, {"(-N)^2", "(-N) ^ 2"}, {"-(N*2)", "-N * 2"}, {"(-N)*2", "(-N) * 2"},
        {"-(N+2)", "-(N + 2)"}, {"(-N)+2", "-N + 2"}, {"2+(-N)", "2 + (-N)"}, {"-(-N)", "-(-N)"},
        {"(-2)+N", "-2 + N"}, {"N-(-2)", "N - (-2)"}, {"(-2)*N", "(-2) * N"}, {"-(2*N)", "-2 * N"},
        {"(-0)/N", "(-0) / N"}, {"(-2)^N", "(-2) ^ N"}, {"-(2^N)", "-2 ^ N"}, {"N^(-2)", "N ^ (-2)"},
        {"(-N)<(-2)", "-N < -2"}, {"(N<>1)=(N=(1))", "(N != 1) == (N == 1)"},
        {"(N+1)<=(2-N)", "N + 1 <= 2 - N"}, {"if((N<1),(-N),(N+1))", "if(N < 1, -N, N + 1)"},
        {"or(and(),not((truth)))", "or(and(), not(truth))"}, {"(#label)^(#N)", "#label ^ #N"},
        {"-infinity+(infinity)", "-infinity + infinity"},
        {"min+min(outer.inner,min)", "min + min(outer.inner, min)"}, {"(1e10)*0.00001", "1E+10 * 1E-05"},
        {"123456789-0.1234567891", "1.2345679E+08 - 0.12345679"},
        {"label==(\"\\1\\0017\\18\\1x\\\"\\\\\\n\\t\\r\\v\\x7f~\\377\")",
         "label == \"\\1\\0017\\18\\1x\\\"\\\\\\n\\t\\r\\13\\177~\\377\""},
    };
    // clang-format on
    for (const auto& [given, printed] : rows) {
        const owned_tree tree = parsed(domain.get(), given);
        ASSERT_TRUE(tree) << given;
        EXPECT_EQ(text_of(tree.get()), printed);
    }
    // What no text means.
    const q_operator_t negate = q_operator_negate;
    const owned_tree negated[] = {
        owned_tree(composite(negate, {number(2)})), owned_tree(composite(negate, {number(-2)})),
        owned_tree(composite(q_operator_power, {composite(negate, {composite(negate, {number(-2)})}),
                                                composite(negate, {number(-2)})})),
        owned_tree(reference(new_node(domain.get(), "cd")))};
    const std::string texts[] = {"-2", "2", "(-2) ^ 2", q_node_get_name(node_at(domain.get(), 6))};
    for (std::size_t i = 0; i < std::size(texts); ++i) EXPECT_EQ(text_of(negated[i].get()), texts[i]);
    EXPECT_EQ(text_of(q_expression_get_arguments(negated[2].get())[0]), "-2");
    q_string_delete(nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
}

// The text without one pair of parentheses that is not that of a call: the pair that opens at this place, if one does.
std::string without_pair(const std::string& text, std::size_t place) {
    bool in_string = false;
    std::size_t open = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == '"')
            in_string = !in_string;
        if (in_string) continue;
        if (i == place && (text[i] != '(' || (i > 0 && std::isalnum(text[i - 1])))) return "";
        if (text[i] == '(' && i >= place) ++open;
        if (text[i] == ')' && i >= place && --open == 0) {
            std::string shorter = text;
            shorter[place] = shorter[i] = ' ';
            return shorter;
        }
    }
    return "";
}

TEST(expressions, are_read_back_as_they_were) {
    for (unsigned seed = 1; seed <= 20000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const owned_domain domain = family(seed % 2 == 0 ? "cc" : "uo");
        tree_generator generator(random, nodes_of(domain.get()));
        owned_tree tree(generator.make(yields(seed % 4), 1 + int(seed % 7)));
        const owned_tree copy(q_expression_clone(tree.get()));
        ASSERT_TRUE(equal(copy.get(), tree.get()));
        const std::string text = text_of(tree.get());
        tree.reset();
        const owned_tree again = parsed(domain.get(), text);
        EXPECT_TRUE(equal(again.get(), copy.get())) << text;
        EXPECT_EQ(text_of(again.get()), text);
        for (std::size_t i = 0; i < text.size() && text.size() < 80; ++i) {
            const std::string shorter = without_pair(text, i);
            EXPECT_FALSE(!shorter.empty() && equal(parsed(domain.get(), shorter).get(), copy.get())) << text;
        }
    }
}

TEST(expressions, have_numbers_as_printf_would_write_them) {
    const owned_domain domain = family();
    std::mt19937 random(1);
    tree_generator generator(random, {});
    for (int i = 0; i < 40000; ++i) {
        generator.exact_numbers = i % 2 == 0;
        const double value = generator.any_number();
        char expected[32];
        std::snprintf(expected, sizeof expected, "%.8G", value);
        if (std::fabs(value) == std::numeric_limits<double>::max())
            std::strcpy(expected, value < 0 ? "-infinity" : "infinity");
        const std::string text = text_of(owned_tree(number(value)).get());
        EXPECT_EQ(text, expected);
        const double read = q_expression_get_number(parsed(domain.get(), text).get());
        EXPECT_TRUE(!generator.exact_numbers || read == value) << text;
    }
}

TEST(expressions, may_be_a_million_levels_deep) {
    const std::function<q_expression_t(q_expression_t, int)> shapes[] = {
        [](q_expression_t tree, int) { return composite(q_operator_negate, {tree}); },
        [](q_expression_t tree, int i) {
            if (i % 3 == 0) return composite(q_operator_min, {number(1), tree, number(2)});
            return composite(q_operator_add + i % 5,
                             {i % 2 == 0 ? tree : number(1), i % 2 == 0 ? number(2) : tree});
        }};
    const owned_domain domain = family();
    for (const auto& grown : shapes) {
        owned_tree tree(reference(node_at(domain.get(), 2)));
        for (int i = 0; i < 1000000; ++i) tree.reset(grown(tree.release(), i));
        owned_tree copy(q_expression_clone(tree.get()));
        EXPECT_TRUE(equal(copy.get(), tree.get()));
        const std::string text = text_of(copy.get());
        tree.reset();
        EXPECT_EQ(text_of(copy.get()), text);
    }
}

TEST(expressions, lack_of_memory_leaves_them_as_they_were) {
    if (!allocation_faults::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    const owned_domain domain = family();
    const owned_tree tree =
        parsed(domain.get(), "if(label == \"\\1\\2\\3\\4\\5\", N + 2 ^ (#N), max(N, -1, 12345678))");
    const std::string text = text_of(tree.get());
    const tested_call copies = [&](q_domain_t, const nodes&) {
        q_expression_t copy = q_expression_clone(tree.get());
        const q_status_t status = outcome(copy);
        tree_deleter()(copy);
        return status;
    };
    const tested_call prints = [&](q_domain_t, const nodes&) {
        char* const printed = q_expression_to_string(tree.get());
        const q_status_t status = outcome(printed);
        EXPECT_TRUE(status != q_error_none || printed == text);
        q_string_delete(printed);
        return status;
    };
    const tested_call makes = [&](q_domain_t, const nodes& n) {
        q_expression_t parts[] = {label("a text that is longer than a pointer"), nullptr, nullptr};
        q_status_t status = outcome(parts[0]);
        if (status == q_error_none) status = outcome(parts[1] = reference(n.at(0)));
        q_expression_t whole = nullptr;
        if (status == q_error_none)
            status = outcome(whole = q_expression_make_composite(q_operator_equals, parts));
        for (q_expression_t part : {parts[0], parts[1]}) {
            const q_status_t deleted = part == nullptr ? q_error_usage : q_expression_delete(part);
            EXPECT_EQ(deleted, part == nullptr || whole != nullptr ? q_error_usage : q_error_none);
        }
        tree_deleter()(whole);
        return status;
    };
    expect_survivals([] { return family(); }, copies, prints, makes);
}

}  // namespace
