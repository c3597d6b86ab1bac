#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "allocation_faults.h"
#include "expression_trees.h"
#include "network_building.h"

namespace {

using testing::ElementsAre;

// Label nodes, a boolean one b, a numbered one n, a continuous one x and a function f.
owned_domain small_network() {
    owned_domain domain(q_domain_new());
    for (const char* name : {"b", "n", "a", "true", "a_long_name_of_a_node"})
        new_chance(domain.get(), name, 2);
    q_node_set_subtype(node_at(domain.get(), 0), q_subtype_boolean);
    q_node_set_subtype(node_at(domain.get(), 1), q_subtype_number);
    new_continuous(domain.get(), "x");
    q_node_set_name(new_node(domain.get(), "fo"), "f");
    return domain;
}

struct parse_result {
    explicit parse_result(const std::string& source)
        : tree(q_domain_parse_expression(domain.get(), source.c_str(), hear, this)), code(q_error_code()) {}

    static void hear(size_t position, const char* message, void* data) {
        static_cast<parse_result*>(data)->messages.push_back(std::to_string(position) + ": " + message);
    }

    std::vector<std::string> messages;
    owned_domain domain = small_network();
    owned_tree tree;
    q_error_t code;
};

// With ' for " in the texts. Other texts for the same, with a pair of parentheses around each operation.
TEST(ExpressionParser, Trees) {
    const std::vector<std::string> cases[] = {
        {"1-2-3*4/5", "(1-2)-((3*4)/5)"},
        {"2^3^n*2", "(2^(3^n))*2"},
        {"-(-(2))", "2"},
        {"-2*x", "-(2*x)"},
        {"-2^2", "-(2^2)"},
        {"-x+1", "(-(x))+1"},
        {"-1<=-x", "(-1)<=(-(x))"},
        {"and(1=2,1<>2,n+1!=n)", "and((1==2),(1!=2),((n+1)!=n))"},
        {"if ( true , '\\x41' , 'b' ) % the end", "if(true,'A','b')"},
        {"-infinity%\n+max(.5,1e2, 5.)-1e999", "((-infinity)+max(0.5,100,5))-infinity"},
        {"#a + # % comment\n true", "(#a)+(#true)"},
    };
    for (std::vector<std::string> texts : cases) {
        const owned_domain domain = small_network();
        owned_tree trees[2];
        for (int i : {0, 1}) {
            std::ranges::replace(texts[std::size_t(i)], '\'', '"');
            trees[i].reset(
                q_domain_parse_expression(domain.get(), texts[std::size_t(i)].c_str(), nullptr, nullptr));
            EXPECT_EQ(q_error_code(), q_error_none);
        }
        EXPECT_TRUE(trees[0] && equal(trees[0].get(), trees[1].get())) << texts[0];
    }
}

// Messages with texts, in which an @ is where the message is to say it is, and ' stands for ".
TEST(ExpressionParser, TellsWhatIsWrongAndWhere) {
    const struct {
        std::string message;
        std::vector<std::string> texts;
        q_error_t code = q_error_parse;
    } cases[] = {
        {"unexpected token",
         {"@", "1 + )@ 2", "2 ^ -@ 1", "1 2@", "1 < 2 <@ 3", "true (@ 1)", ".@", "'x' 'y'@", "min(1, )@"}},
        {"`!' must be followed by `='", {"1 !@ 2"}},
        {"unexpected character: `$'", {"1 $@ 2", "$@"}},
        {"string did not end", {"'x@"}},
        {"no such node: y.z", {"y.z@ + 1"}},
        {"unknown operator `infinity'", {"exp(infinity@ (1))"}},
        {"`,' or `)' expected", {"exp(1 2@)", "exp(1@"}},
        {"`)' expected", {"(1 + 2,@ 3", "(1;@"}},
        {"`#' must be followed by the name of a discrete node", {"#1@", "#x@", "#y@ + 1"}},
        {"API error: The supplied expression is invalid (e.g., wrong type).",
         {"1 + exp(1, 2)@ + 1", "1 + 'x'@ + 1", "-a@ + 1", "1 < b@"},
         q_error_invalid_expression},
        {"warning: null character in string", {"'\\0@'"}, q_error_none},
    };
    for (const auto& [message, texts, code] : cases)
        for (std::string source : texts) {
            std::ranges::replace(source, '\'', '"');
            const std::size_t position = source.find('@');
            const parse_result parsed(source.erase(position, 1));
            EXPECT_THAT(parsed.messages, ElementsAre(std::to_string(position) + ": " + message)) << source;
            EXPECT_EQ(parsed.code, code) << source;
            EXPECT_EQ(parsed.tree == nullptr, code != q_error_none) << source;
        }
}

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    while (times-- > 0) all += text;
    return all;
}

TEST(ExpressionParser, DepthIsLimitedAndLengthIsNot) {
    const std::pair<std::string, std::string> nests[] = {
        {"(", ")"}, {"2^", ""}, {"exp(", ")"}, {"-2*(", ")"}};
    for (const auto& [open, close] : nests) {
        EXPECT_TRUE(parse_result(repeated(open, 256) + "x" + repeated(close, 256)).tree) << open;
        const std::string place = std::to_string(257 * open.size());
        EXPECT_THAT(parse_result(repeated(open, 100000)).messages,
                    ElementsAre(place + ": expression nested too deeply"));
    }
    EXPECT_FALSE(parse_result(repeated("(2^", 128) + "(1" + repeated(")", 129)).tree);
    const parse_result sum("1" + repeated("+x", 100000)), product("1" + repeated(" %\n*2", 100000));
    EXPECT_TRUE(sum.tree && product.tree);
}

TEST(ExpressionParser, LackOfMemoryIsReported) {
    if (!allocation_faults::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    const owned_domain domain = small_network();
    const char* const text = "if(a_long_name_of_a_node == \"a label that is long\" , -min(1, 2, f), 3 ^ #a)";
    const auto hear = [](size_t, const char* message, void* count) {
        if (std::string_view(message) == "out-of-memory") ++*static_cast<int*>(count);
    };
    bool fired = true;
    for (std::size_t n = 0; fired; ++n) {
        int messages = 0;
        allocation_faults plan(n / 2, n % 2 == 1);
        owned_tree tree(q_domain_parse_expression(domain.get(), text, hear, &messages));
        fired = plan.stop();
        EXPECT_EQ(q_error_code(), fired ? q_error_no_memory : q_error_none) << n;
        EXPECT_TRUE(messages == (fired ? 1 : 0) && (tree == nullptr) == fired) << n;
        tree.reset();
        EXPECT_EQ(plan.leaked(), 0U) << n;
    }
}

}  // namespace
