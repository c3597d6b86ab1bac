#include "evaluation.h"

#include <map>

#include "errors.h"
#include "expression_trees.h"
#include "expression_value.h"
#include "network_building.h"

namespace {

using namespace quarn;
using oracle::outcome;

// What a function returns, or the code that it fails with.
template <class Function>
outcome caught(Function function) {
    try {
        const auto made = function();
        if constexpr (std::is_same_v<decltype(made), const value>)
            return std::visit([](auto held) { return outcome{q_error_none, held}; }, made);
        else
            return {q_error_none, double(made)};
    } catch (const failure& failed) {
        return {failed.code()};
    }
}

std::string shown(const outcome& made) {
    if (made.code != q_error_none) return q_error_name(uint32_t(made.code));
    if (const auto* const label = std::get_if<std::string>(&made.value)) return '"' + *label + '"';
    if (const auto* const flag = std::get_if<bool>(&made.value)) return *flag ? "true" : "false";
    return eight_digits(std::get<double>(made.value));
}

struct known {
    value stands_for;
    std::size_t state = 0;
    double variance = 0;
    q_error_t code = q_error_none;
};
// What nodes stand for, for the library and for the oracle.
struct given_values final : node_values {
    std::map<const node*, known> of;

    value value_of(const node& referred) const override {
        require(of.at(&referred).code == q_error_none, of.at(&referred).code);
        return of.at(&referred).stands_for;
    }
    std::size_t state_of(const node& discrete) const override { return of.at(&discrete).state; }
    double variance_of(const node& numeric) const override { return of.at(&numeric).variance; }
    double quantile_of(const node& numeric, double level) const override {
        return level * variance_of(numeric);
    }
    double probability_of(const expression& condition) const override { return 1.0 / condition.op; }

    oracle::node_meanings meanings() const {
        const auto of_these = [this](auto asked) {
            return [=, this](auto about, auto... more) {
                return caught([&] { return (this->*asked)(*about, more...); });
            };
        };
        return {of_these(&given_values::value_of), of_these(&given_values::state_of),
                of_these(&given_values::variance_of), of_these(&given_values::quantile_of),
                of_these(&given_values::probability_of)};
    }
};

struct Evaluation : testing::Test {
    owned_domain owned{q_domain_new()};
    q_domain_t const domain = owned.get();
    q_node_t const L = new_chance(domain, "L", 4), B = new_chance(domain, "B", 2),
                   N = new_chance(domain, "N", 2), I = new_chance(domain, "I", 3),
                   X = new_continuous(domain, "X"), U = new_chance(domain, "U", 0, {}, "fo"),
                   V = new_chance(domain, "V", 0, {}, "fo");
    const std::vector<q_node_t> nodes = nodes_of(domain);
    given_values values;

    void SetUp() override {
        for (const auto& [node, subtype] : {std::pair(B, q_subtype_boolean), std::pair(N, q_subtype_number),
                                            std::pair(I, q_subtype_interval)})
            ASSERT_EQ(q_node_set_subtype(node, subtype), q_error_none);
        for (const auto& [state, text] : {std::pair(0, "low"), std::pair(1, "high"), std::pair(2, "high")})
            q_node_set_state_label(L, std::size_t(state), text);
        q_node_set_state_value(N, 0, -1);
        q_node_set_state_value(N, 1, 2.5);
        q_node_set_state_value(I, 1, 1);
        q_node_set_state_value(I, 2, 4);
        values.of = {{L, {"high", 1}},
                     {B, {true, 1}},
                     {N, {2.5, 1, 3}},
                     {I, {-4.0, 2, 7}},
                     {X, {0.5, 0, INFINITY}},
                     {U, {NAN, 0, NAN}},
                     {V, {0.0, 0, 0, q_error_no_value}}};
    }

    owned_tree parsed(const char* text) {
        const auto report = [](std::size_t, const char* message, void* of) {
            ADD_FAILURE() << message << " in " << static_cast<const char*>(of);
        };
        return owned_tree(q_domain_parse_expression(domain, text, report, const_cast<char*>(text)));
    }
    outcome evaluated(q_expression_t tree) const {
        return caught([&] { return evaluate(*tree, values); });
    }
};

TEST_F(Evaluation, EveryOperatorAtItsEdges) {
    const char divided[] = "division_by_zero", unsuitable[] = "inappropriate_arguments",
               failed[] = "computation_failed";
    // clang-format off
    const std::pair<const char*, std::string> rows[] = {
        {"1 + 2 * 3 - 4 / 8", "6.5"}, {"-2 ^ 2", "-4"}, {"2 ^ 3 ^ 2", "512"}, {"0 ^ 0", "1"},
        {"0 ^ (-1)", divided}, {"(-0) ^ (-2)", divided}, {"(-8) ^ (-3)", "-0.001953125"},
        {"(-8) ^ (1 / 3)", unsuitable}, {"(-0.5) ^ 1e300", "0"}, {"(-2) ^ 1e300", failed},
        {"infinity + 1", "1.7976931e+308"}, {"2 * infinity", failed}, {"-infinity - infinity", failed},
        {"1 / 0", divided}, {"0 / (-0)", divided}, {"1 / 1e-310", failed}, {"mod(7, -3)", "1"},
        {"mod(-7, 3)", "-1"}, {"mod(5.5, 2)", "1.5"}, {"mod(1, 0)", divided}, {"log(10)", "2.3025851"},
        {"log(0)", unsuitable}, {"log2(8)", "3"}, {"log2(-1)", unsuitable}, {"log10(1e-3)", "-3"},
        {"log10(-0)", unsuitable}, {"exp(1)", "2.7182818"}, {"exp(-1000)", "0"}, {"exp(1000)", failed},
        {"sin(1)", "0.84147098"}, {"cos(1)", "0.54030231"}, {"tan(1)", "1.5574077"},
        {"sinh(1)", "1.1752012"}, {"cosh(1)", "1.5430806"}, {"cosh(-1000)", failed},
        {"tanh(1)", "0.76159416"}, {"sqrt(2)", "1.4142136"}, {"sqrt(-0)", "-0"}, {"sqrt(-1)", unsuitable},
        {"abs(-3)", "3"}, {"floor(-1.5)", "-2"}, {"ceil(-1.5)", "-1"}, {"min(3, 1, 2)", "1"},
        {"max(3, 4, X)", "4"}, {"min(1, 1 / 0)", divided}, {"if(B, 1, 1 / 0)", "1"},
        {"if(not(B), log(0), if(false, U, 4)) + 1", "5"}, {"if(1 / 0 > 0, 1, 2)", divided},
        {"if(B, L, \"low\")", "\"high\""}, {"and()", "true"}, {"or()", "false"}, {"and(B, 1 < 2)", "true"},
        {"and(B, false, 1 / 0 == 1)", "false"}, {"and(B, 1 / 0 == 1)", divided},
        {"or(false, 2 < 1)", "false"}, {"or(false, B, U == 1)", "true"}, {"or(false, U == 1)", failed},
        {"not(or(not(B), and()))", "false"}, {"2 < 2", "false"}, {"2 <= 2", "true"}, {"2 > 2", "false"},
        {"2 >= 2", "true"}, {"3 < 2", "false"}, {"3 > 2", "true"}, {"0 == -0", "true"},
        {"0.1 + 0.2 == 0.3", "false"}, {"0.1 + 0.2 != 0.3", "true"}, {"L == \"high\"", "true"},
        {"\"hig\" == L", "false"}, {"L != \"\"", "true"}, {"B == false", "false"}, {"B != (1 < 2)", "false"},
        {"-X * N + I", "-5.25"}, {"U", failed}, {"V", "no_value"}, {"#I - #L", "1"},
        {"variance(N)", "3"}, {"variance(X)", failed}, {"quantile(I, N - 2)", "3.5"},
        {"quantile(I, 1.001)", unsuitable}, {"quantile(I, -1e-9)", unsuitable}, {"quantile(U, 1)", failed},
        {"quantile(U, 1 / 0)", divided}, {"1 / probability(and(B, 1 / 0 == 1))", "98"},
        {"Normal(1 / 0, 1)", unsuitable}, {"NoisyOR(B, 0.5)", unsuitable},
        {"truncate(1, Poisson(2))", unsuitable}};
    // clang-format on
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(shown(evaluated(parsed(text).get())), expected) << text;
}

TEST_F(Evaluation, RandomTrees) {
    int successes = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        std::mt19937 random(seed);
        tree_generator trees(random, nodes);
        for (q_node_t node : {N, I, X, U, V}) {
            const auto mostly = [&](auto usual, auto rare) { return random() % 16 == 0 ? rare : usual; };
            values.of[node] = {mostly(trees.any_number(), double(NAN)), random() % 3,
                               mostly(trees.any_number(), double(INFINITY)),
                               q_error_t(mostly(q_error_none, q_error_no_value))};
        }
        const std::string label = trees.any_label();
        values.of[B].stands_for = seed % 2 == 0;
        values.of[L].stands_for = label.c_str();
        const owned_tree tree(trees.make(yields(seed % 3), int(seed % 7)));
        const outcome expected = oracle::expression_value(tree.get(), values.meanings());
        EXPECT_EQ(evaluated(tree.get()), expected) << seed;
        successes += expected.code == q_error_none;
    }
    EXPECT_GT(successes, 2000);
}

TEST_F(Evaluation, AMillionLevels) {
    q_expression_t tree = number(1);
    for (int i = 0; i < 250'000; ++i) {  // to 2 minus what it was
        tree = composite(q_operator_negate, {tree});
        tree = composite(q_operator_add, {tree, number(1)});
        tree = composite(q_operator_add, {number(1), tree});
        tree = composite(q_operator_if, {boolean(false), number(0), tree});
    }
    EXPECT_EQ(evaluated(owned_tree(tree).get()), (outcome{q_error_none, 1.0}));
}

TEST_F(Evaluation, NodesOfAnotherSubtypeThanBefore) {
    std::vector<owned_tree> trees;
    for (const char* text :
         {"N + 1", "1 - N", "-N", "min(1, N)", "N < 1", "N == 1", "1 != N", "quantile(X, N)", "variance(N)",
          "quantile(N, 0.5)", "not(B)", "and(true, B)", "or(B)", "if(B, 1, 2)", "B == true", "L == \"high\"",
          "\"high\" != L", "1 + if(true, N, 1)"})
        trees.push_back(parsed(text));
    const owned_tree number = parsed("if(true, N, 1)"), flag = parsed("B"), label = parsed("L");
    q_node_set_subtype(N, q_subtype_label);
    q_node_set_subtype(B, q_subtype_interval);
    q_node_set_subtype(L, q_subtype_number);
    std::swap(values.of[N], values.of[L]);
    values.of[B].stands_for = 1.0;
    for (std::size_t i = 0; i < trees.size(); ++i)
        EXPECT_EQ(evaluated(trees[i].get()).code, q_error_inappropriate_arguments) << i;
    const auto fails = [&](auto call) { return caught(call).code == q_error_inappropriate_arguments; };
    EXPECT_TRUE(fails([&] { return evaluate_number(*number, values); }));
    EXPECT_TRUE(fails([&] { return evaluate_boolean(*flag, values); }));
    EXPECT_TRUE(fails([&] { return double(evaluate_state(*label, *N, values)); }));
}

TEST_F(Evaluation, StatesAndWhatTheyStandFor) {
    const char invalid[] = "invalid_state_values", failed[] = "computation_failed";
    const q_node_t W = new_chance(domain, "W", 1), Z = new_chance(domain, "Z", 2);
    q_node_set_subtype(W, q_subtype_interval);
    q_node_set_state_value(W, 0, -INFINITY);
    q_node_set_subtype(Z, q_subtype_number);
    // clang-format off
    const std::tuple<q_node_t, const char*, std::string> selected[] = {
        {L, "\"low\"", "0"}, {L, "\"high\"", failed}, {L, "\"\"", failed}, {L, "\"none\"", failed},
        {B, "1 < 2", "1"}, {B, "and(B, false)", "0"}, {N, "-1", "0"}, {N, "N + 1e-7", "1"}, {N, "2", failed},
        {I, "-1e300", "0"}, {I, "1", "1"}, {I, "4", "2"}, {W, "0", "0"}, {Z, "0", invalid},
        {N, "1 / 0", "division_by_zero"}};
    // clang-format on
    for (const auto& [node, text, expected] : selected)
        EXPECT_EQ(shown(caught([&] { return double(evaluate_state(*parsed(text), *node, values)); })),
                  expected)
            << text;
    // clang-format off
    const std::tuple<q_node_t, std::size_t, std::string> meant[] = {
        {L, 1, "\"high\""}, {L, 3, "\"\""}, {B, 0, "false"}, {B, 1, "true"}, {N, 0, "-1"}, {I, 0, "1"},
        {I, 1, "2.5"}, {I, 2, "4"}, {W, 0, invalid}, {Z, 0, invalid}};
    // clang-format on
    for (const auto& [node, state, expected] : meant)
        EXPECT_EQ(shown(caught([&] { return value_in_state(*node, state); })), expected) << state;
}

}  // namespace
