// Expressions: how trees are made and owned, and what their text is.
#include <cctype>
#include <cstdio>
#include <set>

#include "node_models.h"
#include "scenarios.h"

using namespace scenarios;

namespace {

// Nodes of all types; those whose names are those of operators too can be told by the missing parenthesis.
owned_domain family(const char* last = "cc") {
    owned_domain domain(q_domain_new());
    const char* const names[] = {"label", "truth", "N", "outer.inner", "min"};
    for (int i = 0; i < 5; ++i) {
        q_node_t node = new_chance(domain.get(), names[i], 2, {}, i == 4 ? "fo" : "cd");
        if (i < 4) q_node_set_subtype(node, q_subtype_label + (i == 0 ? 0 : i));
    }
    q_node_set_name(new_node(domain.get(), last), "X");
    return domain;
}

q_expression_t argument_for(char letter, const nodes& n) {
    switch (letter) {
    case 'n': return number(0.5);
    case 'b': return boolean(true);
    case 'l': return label("a");
    case 'd': return composite(q_operator_poisson, {number(1)});
    case 'p':
        return composite(q_operator_not, {parsed(q_node_get_domain(n[0]), "probability(true)<1").release()});
    default: return reference(n.at(std::string("LBNIFX").find(letter)));
    }
}

TEST(expressions, operators_take_arguments_of_certain_numbers_and_types) {
    const owned_domain domain = family();
    const nodes n = nodes_of(domain.get());
    std::set<q_operator_t> tried;
    for (const auto& [result, operators, taken, refused] : signatures)
        for (q_operator_t op : operators)
            for (bool is_taken : {true, false}) {
                tried.insert(op);
                std::istringstream words(is_taken ? taken : refused);
                for (std::string word; words >> word;) {
                    SCOPED_TRACE(testing::Message() << op << ' ' << word);
                    std::vector<q_expression_t> arguments;
                    for (char letter : word)
                        if (letter != '-') arguments.push_back(argument_for(letter, n));
                    const owned_tree made(composite(op, arguments));
                    EXPECT_EQ(outcome(made.get()), is_taken ? q_error_none : q_error_invalid_expression);
                    EXPECT_EQ(made && listed(q_expression_get_arguments(made.get())) == arguments, is_taken);
                    for (q_expression_t argument : arguments)
                        EXPECT_EQ(q_expression_delete(argument), is_taken ? q_error_usage : q_error_none);
                }
            }
    EXPECT_EQ(tried.size(), std::size_t(q_operator_number - q_operator_normal));
    const owned_tree argument(number(1));
    for (int op : {-1, 0, 59, 114, 116, 118, 1000})
        EXPECT_EQ(outcome(composite(op, {argument.get()})), q_error_usage) << op;
}

TEST(expressions, arguments_belong_to_one_expression) {
    const owned_tree free_one(number(3)), sum(composite(q_operator_add, {number(1), number(2)}));
    const q_expression_t owned = q_expression_get_arguments(sum.get())[1];
    EXPECT_EQ(outcome(composite(q_operator_max, {free_one.get(), owned})), q_error_usage);
    EXPECT_EQ(outcome(composite(q_operator_max, {free_one.get(), free_one.get()})), q_error_usage);
    EXPECT_EQ(q_expression_delete(owned), q_error_usage);
    EXPECT_EQ(text_of(sum.get()), "1 + 2");
    const owned_tree larger(composite(q_operator_max, {q_expression_clone(owned)}));
    EXPECT_EQ(text_of(larger.get()), "max(2)");
}

TEST(expressions, constants_and_references_hold_what_they_were_made_of) {
    const owned_domain domain = family();
    const double infinity = HUGE_VAL, largest = std::numeric_limits<double>::max();
    std::string text = "yes";
    const owned_tree trees[] = {owned_tree(number(-2.5)), owned_tree(label(text.c_str())),
                                owned_tree(reference(node_at(domain.get(), 4))), owned_tree(boolean(7)),
                                owned_tree(composite(q_operator_and, {}))};
    text = "no ";
    for (std::size_t i = 0; i < std::size(trees); ++i) {
        const q_expression_t tree = trees[i].get();
        EXPECT_EQ(q_expression_get_operator(tree), i < 4 ? q_operator_number + int(i) : int(q_operator_and));
        EXPECT_EQ(q_expression_is_composite(tree), i < 4 ? 0u : 1u);
        const q_status_t read[] = {
            outcome(q_expression_get_number(tree)), outcome(q_expression_get_label(tree)),
            outcome(q_expression_get_node(tree)), outcome(q_expression_get_boolean(tree) < 0 ? -1.0 : 0.0),
            outcome(q_expression_get_arguments(tree))};
        for (std::size_t j = 0; j < 5; ++j)
            EXPECT_EQ(read[j], i == j ? q_error_none : q_error_usage) << i << j;
    }
    EXPECT_EQ(q_expression_get_number(trees[0].get()), -2.5);
    EXPECT_STREQ(q_expression_get_label(trees[1].get()), "yes");
    EXPECT_EQ(q_expression_get_node(trees[2].get()), node_at(domain.get(), 4));
    EXPECT_EQ(q_expression_get_boolean(trees[3].get()), 1);
    EXPECT_EQ(outcome(number(std::nan(""))), q_error_usage);
    for (double sign : {1.0, -1.0})
        EXPECT_EQ(q_expression_get_number(owned_tree(number(sign * infinity)).get()), sign * largest);
}

TEST(expressions, are_printed) {
    const owned_domain domain = family();
    const std::pair<const char*, const char*> rows[] = {
        {"(N+1)*2-(1-2)", "(N + 1) * 2 - (1 - 2)"},
        {"(1-2)-((3*4)/5)", "1 - 2 - 3 * 4 / 5"},
        {"(2^(3^N))*2", "2 ^ 3 ^ N * 2"},
        {"(-(-(2)))-(-(2*N))-(-(2^2))", "2 - (-2 * N) - (-2 ^ 2)"},
        {"((-(N))+1)>=(-(N))", "-N + 1 >= -N"},
        {"-infinity%\n+max(.5,1e2, 5.)-1e999", "-infinity + max(0.5, 100, 5) - infinity"},
        {"if(true,\"\\x41\",\"b\") % the end", "if(true, \"A\", \"b\")"},
        {"#label + # % comment\n N", "#label + #N"},
        {"(N^1)*(2^N)/3", "N ^ 1 * 2 ^ N / 3"},
        {"-(N^2)+(-N)^2", "-N ^ 2 + (-N) ^ 2"},
        {"(N<>1)=(N=(1))", "(N != 1) == (N == 1)"},
        {"(N+1)<=(2-N)", "N + 1 <= 2 - N"},
        {"if((N<1),(-N),(#N))", "if(N < 1, -N, #N)"},
        {"or(and(),not((truth)))", "or(and(), not(truth))"},
        {"min+min(outer.inner,-infinity)", "min + min(outer.inner, -infinity)"},
        {"label==(\"\\1\\0017\\18\\1x\\\"\\\\\\n\\t\\r\\v\\x7f~\\377\")",
         "label == \"\\1\\0017\\18\\1x\\\"\\\\\\n\\t\\r\\13\\177~\\377\""},
    };
    for (const auto& [given, printed] : rows) EXPECT_EQ(text_of(parsed(domain.get(), given).get()), printed);
    // What no text means.
    const auto negated = [](q_expression_t tree) { return composite(q_operator_negate, {tree}); };
    EXPECT_EQ(text_of(owned_tree(negated(number(2))).get()), "-2");
    EXPECT_EQ(text_of(owned_tree(negated(number(-2))).get()), "2");
    const owned_tree power(composite(q_operator_power, {negated(negated(number(-2))), negated(number(-2))}));
    EXPECT_EQ(text_of(power.get()), "(-2) ^ 2");
    EXPECT_EQ(text_of(q_expression_get_arguments(power.get())[0]), "-2");
    q_node_t unnamed = new_node(domain.get(), "cd");
    EXPECT_EQ(text_of(owned_tree(reference(unnamed)).get()), q_node_get_name(unnamed));
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

TEST(expressions, are_read_back_as_they_were_and_have_no_needless_parentheses) {
    for (unsigned seed = 1; seed <= 8000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const owned_domain domain = family(seed % 2 == 0 ? "cc" : "uo");
        tree_generator generator(random, nodes_of(domain.get()));
        owned_tree tree(generator.make(yields(seed % 4), 1 + int(seed % 6)));
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

TEST(expressions, may_be_of_many_levels) {
    const owned_domain domain = family();
    owned_tree tree(reference(node_at(domain.get(), 2)));
    for (int i = 0; i < 200000; ++i) {
        q_expression_t below = tree.release();
        if (i % 3 == 0)
            tree.reset(composite(q_operator_min, {number(1), below, number(2)}));
        else if (i % 2 == 0)
            tree.reset(composite(q_operator_add + i % 5, {below, number(2)}));
        else
            tree.reset(composite(q_operator_add + i % 5, {number(1), below}));
    }
    const owned_tree copy(q_expression_clone(tree.get()));
    EXPECT_TRUE(equal(copy.get(), tree.get()));
    const std::string text = text_of(tree.get());
    tree.reset();
    EXPECT_EQ(text_of(copy.get()), text);
}

TEST(expressions, lack_of_memory_leaves_them_as_they_were) {
    const owned_domain domain = family();
    const owned_tree tree = parsed(domain.get(), "if(label == \"\\1\\2\\3 a label that is long\", N "
                                                 "+ 2 ^ (#N), max(N, -1, 12345678))");
    const std::string text = text_of(tree.get());
    const tested_call copies = [&](q_domain_t, const nodes&) {
        const owned_tree copy(q_expression_clone(tree.get()));
        return outcome(copy.get());
    };
    const tested_call prints = [&](q_domain_t, const nodes&) {
        char* const printed = q_expression_to_string(tree.get());
        const q_status_t status = outcome(printed);
        EXPECT_TRUE(status != q_error_none || printed == text);
        q_string_delete(printed);
        return status;
    };
    const tested_call makes = [&](q_domain_t, const nodes& n) {
        owned_tree left(label("a text that is longer than a pointer")),
            right(left ? reference(n.at(0)) : nullptr);
        const q_expression_t parts[] = {left.get(), right.get(), nullptr};
        if (!right) return q_status_t(q_error_code());
        const owned_tree whole(q_expression_make_composite(q_operator_equals, parts));
        const q_status_t status = outcome(whole.get());
        for (owned_tree* part : {&left, &right})
            EXPECT_EQ(q_expression_delete(part->release()), whole ? q_error_usage : q_error_none);
        return status;
    };
    const tested_call reads = [&](q_domain_t into, const nodes&) {
        int messages = 0;
        const auto hear = [](size_t, const char* message, void* count) {
            *static_cast<int*>(count) += std::string_view(message) == "out-of-memory" ? 1 : 2;
        };
        const owned_tree read(q_domain_parse_expression(into, text.c_str(), hear, &messages));
        const q_status_t status = outcome(read.get());
        EXPECT_EQ(messages, status == q_error_none ? 0 : 1);
        return status;
    };
    expect_survivals([] { return family(); }, copies, prints, makes, reads);
}

}  // namespace
