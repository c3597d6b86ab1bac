#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "expression_trees.h"
#include "network_building.h"
#include "texts.h"

namespace {

using testing::ElementsAre;

// Label nodes, a boolean one b, a numbered one n, a continuous one x and a function f.
owned_domain small_network() {
    owned_domain domain(q_domain_new());
    for (const char* name : {"b", "n", "a", "true"}) new_chance(domain.get(), name, 2);
    q_node_set_subtype(node_at(domain.get(), 0), q_subtype_boolean);
    q_node_set_subtype(node_at(domain.get(), 1), q_subtype_number);
    new_continuous(domain.get(), "x");
    q_node_set_name(new_node(domain.get(), "fo"), "f");
    return domain;
}

struct parse_result : heard {
    explicit parse_result(const std::string& source)
        : tree(q_domain_parse_expression(domain.get(), source.c_str(), hear, static_cast<heard*>(this))),
          code(q_error_code()) {}

    owned_domain domain = small_network();
    owned_tree tree;
    q_error_t code;
};

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
        {"warning: null character in string", {"'\\0@'", "if(a == '\\0@', #true, 1)"}, q_error_none},
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

TEST(ExpressionParser, DepthIsLimitedAndLengthIsNot) {
    const std::pair<std::string, std::string> nests[] = {
        {"(", ")"}, {"2^", ""}, {"exp(", ")"}, {"-2*(", ")"}};
    for (const auto& [open, close] : nests) {
        EXPECT_TRUE(parse_result(repeated(256, open) + "x" + repeated(256, close)).tree) << open;
        const std::string place = std::to_string(257 * open.size());
        EXPECT_THAT(parse_result(repeated(100000, open)).messages,
                    ElementsAre(place + ": expression nested too deeply"));
    }
    EXPECT_FALSE(parse_result(repeated(128, "(2^") + "(1" + repeated(129, ")")).tree);
    const parse_result sum("1" + repeated(100000, "+x")), product("1" + repeated(100000, " %\n*2"));
    EXPECT_TRUE(sum.tree && product.tree);
}

}  // namespace
