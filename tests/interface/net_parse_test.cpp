#include <clocale>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <quarn.h>

#include "allocation_faults.h"
#include "network_building.h"

namespace {

using testing::ElementsAre;

struct parse_result {
    explicit parse_result(const std::string& source)
        : domain(q_net_parse_domain(source.c_str(), hear, this)), code(q_error_code()) {}

    static void hear(size_t position, const char* message, void* data) {
        static_cast<parse_result*>(data)->messages.push_back(std::to_string(position) + ": " + message);
    }

    std::vector<std::string> messages;
    owned_domain domain;
    q_error_t code;
};

struct message_case {
    std::string text;  // with an @ where the message is to say it is
    std::string message;
    q_error_t code = q_error_parse;
};

// Gives each case, put behind the prefix, to the parser.
void expect_messages(const std::string& prefix, const std::vector<message_case>& cases) {
    for (const message_case& tested : cases) {
        std::string source = prefix + tested.text;
        const size_t position = source.find('@');
        source.erase(position, 1);
        const parse_result parsed(source);
        EXPECT_THAT(parsed.messages, ElementsAre(std::to_string(position) + ": " + tested.message)) << source;
        EXPECT_EQ(parsed.code, tested.code) << source;
        EXPECT_EQ(parsed.domain == nullptr, tested.code != q_error_none) << source;
    }
}

const std::string invalid_key =
    "API error: Names used for classes, nodes, and attributes must have the same form as a "
    "C identifier.";

TEST(NetParse, MessagesOutsideBlocks) {
    expect_messages("net {} ",
                    {
                        {"{@", "unexpected token"},
                        {"\"a\"@", "unexpected token"},
                        {".@", "unexpected token"},
                        {"nodes@ a {}", "unknown object type: nodes"},
                        {"discrete decision@ a {}", "unknown object type: decision"},
                        {"discrete nodes@ a {}", "keyword `node', `decision', or `function' expected"},
                        {"discrete {@", "keyword `node', `decision', or `function' expected"},
                        {"net x@ {}", "`{' expected"},
                        {"net { 1@ }", "`}' or an attribute name expected"},
                        {"net {@", "`}' or an attribute name expected"},
                        {"net { a 1@; }", "`=' expected"},
                        {"net { a = 1@; }", "value of a user-defined attribute must be a string"},
                        {"net { a = \"x\" }@", "`;' expected"},
                        {"net { a.b = \"x\";@ }", invalid_key, q_error_invalid_name},
                        {"net { node_size = 1@; }", "`(' expected"},
                        {"net { node_size = (1 a@); }", "number expected"},
                        {"net { node_size = (1 -0.1@); }", "<number> must be nonnegative"},
                        {"net { node_size = (1 2 3@); }", "`)' expected"},
                        {"net { a = \"@", "string did not end"},
                    });
    EXPECT_THAT(parse_result("class A { }").messages, ElementsAre("5: unknown object type: class"));
}

TEST(NetParse, MessagesInNodes) {
    expect_messages(
        "net {} node b {} node ",
        {
            {"{@", "name expected"},
            {"b@ {}", "a node with name `b' already exists"},
            {"a (@", "`{' expected"},
            {"a { =@", "`}' or an attribute name expected"},
            {"a { x = y@; }", "value of a user-defined attribute must be a string"},
            {"a { x.y = \"z\";@ }", invalid_key, q_error_invalid_name},
            {"a { label = 1@; }", "string expected"},
            {"a { position = (1 \"2\"@); }", "number expected"},
            {"a { states = \"x\"@; }", "`(' expected"},
            {"a { states = ()@; }", "empty list of states"},
            {"a { states = (\"x\" y@); }", "state or `)' expected"},
            {"a { states = (\"x\"); states@ = (\"x\"); }", "states specified twice (or more)"},
            {"a { subtype = bool@; }", "`label', `boolean', `number', or `interval' expected"},
            {"a { subtype = 1@; }", "`label', `boolean', `number', or `interval' expected"},
            {"a { subtype = boolean; states = (\"x\"); }@", "a boolean node must have exactly two states"},
            {"a { state_values@ = (1); }", "only numeric nodes can have state values"},
            {"a { subtype = number; subtype = boolean; state_values@ = (1); }",
             "only numeric nodes can have state values"},
            {"a { subtype = number; state_values@ = (1); }", "states must be specified before state values"},
            {"a { subtype = number; states = (\"x\"); state_values = (1); state_values@ = (1); }",
             "state values have already been specified"},
            {"a { subtype = number; states = (\"x\"); state_values = (x@); }", "state value expected"},
            {"a { subtype = number; states = (\"x\"); state_values = (- -@ 1); }", "state value expected"},
            {"a { subtype = number; states = (\"x\"); state_values = (1 2)@; }",
             "incorrect number of state values"},
            {"a { subtype = interval; states = (\"x\"); state_values = (1)@; }",
             "incorrect number of state values"},
        });
}

TEST(NetParse, MessagesInPotentials) {
    expect_messages(
        "net {} node a { states = (\"0\" \"1\"); } node b { states = (\"0\" \"1\"); } "
        "potential (b | a) { data = (1 0 0 1); } potential ",
        {
            {"a@", "`(' expected"},
            {"()@", "empty child node list"},
            {"(|@", "empty child node list"},
            {"(1@)", "`|', `)', or a node name expected"},
            {"(a {@", "`|', `)', or a node name expected"},
            {"(a | b |@", "`|', `)', or a node name expected"},
            {"(a b@)", "`)' expected"},
            {"(c@)", "node `c' not found"},
            {"(a | c@)", "node `c' not found"},
            {"(a | a@)", "node `a' appears twice in potential specification"},
            {"(b)@ {}", "potential specified twice for node `b'"},
            {"(a | b)@ {}", "adding the link b --> a creates a directed cycle"},
            {"(a) }@", "`{' expected"},
            {"(a) { }@", "warning: no potential data specified", q_error_none},
            {"(a) { dat@ = (1 1); }", "unknown field: `dat'"},
            {"(a) { data = (1 1); data@ = (1 1); }", "`data' attribute specified twice"},
            {"(a) { data = 1@; }", "`(' expected"},
            {"(a) { data = (1)@; }", "number expected"},
            {"(a) { data = (1 x@); }", "number expected"},
            {"(a) { data = (((1)) .@)", "number expected"},
            {"(a) { data = (1 1 1@); }", "`)' expected"},
            {"(a) { data = ((1 1);@ }", "`)' expected"},
            {"(a) { data = (1 1))@; }", "`;' expected"},
            {"(a) { data = (1 -1@); }", "warning: negative value in probability potential", q_error_none},
        });
}

// Only an unknown subtype leaves the rest readable.
TEST(NetParse, GoesOnAfterAnUnknownSubtype) {
    const parse_result parsed("net {} node a { subtype = x; } node b { subtype = y; }");
    EXPECT_EQ(parsed.messages.size(), 2U);
    EXPECT_EQ(parsed.code, q_error_parse);
}

// A table that no memory could hold costs no more than the text.
TEST(NetParse, HugeTablesAreNotMadeBeforeTheirNumbersAreThere) {
    std::string source = "net {} ";
    std::string parents;
    for (int i = 0; i < 70; ++i) {
        parents += " a" + std::to_string(i);
        source += "node a" + std::to_string(i) + " { states = (\"0\" \"1\"); } ";
    }
    const parse_result parsed(source + "node b {} potential (b |" + parents + ") { data = (0.5 0.5); }");
    ASSERT_EQ(parsed.messages.size(), 1U);
    EXPECT_TRUE(parsed.messages[0].ends_with(": number expected"));
}

const char* const whole_network = R"(
% Everything that is understood.
net { node_size = (80.5 39.4); first = "1"; label = "kept"; }
node A { label = "an \"A\""; position = (-10.9 20.9); states = ("x" "y" ""); note = "n"; remark = "r"; }
discrete node B.c { subtype = boolean; }
node N { subtype = number; states = ("" ""); state_values = (-1 + 2.5); }
node I {
    subtype = interval;
    states = ("" "" "");
    state_values = (-infinity - 1 1 infinity);
}
potential (B.c | N A)
{
    data = (((1 2) (3 4) (5 6)) ((7 8) 9 10 11 12));
}
potential (N | I) { }
net { second = "2"; first = "3"; }
)";

void write_file(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

struct temporary_file {
    explicit temporary_file(const std::string& contents)
        : path(testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name()) {
        write_file(path, contents);
    }
    ~temporary_file() { std::filesystem::remove(path); }
    std::string path;
};

std::string attributes_of(q_attribute_t attribute) {
    std::string all;
    for (; attribute != nullptr; attribute = q_attribute_get_next(attribute))
        all += std::string(q_attribute_get_key(attribute)) + "=" + q_attribute_get_value(attribute) + ";";
    return all;
}

std::vector<std::string> names_of(const std::vector<q_node_t>& nodes) {
    std::vector<std::string> names;
    for (q_node_t node : nodes) names.emplace_back(q_node_get_name(node));
    return names;
}

struct NetParseWhole : testing::Test {
    q_node_t node(const char* name) const { return q_domain_get_node_by_name(parsed.domain.get(), name); }

    temporary_file file{whole_network};
    parse_result parsed{file.path};
};

TEST_F(NetParseWhole, ReadsTheDomain) {
    EXPECT_EQ(parsed.code, q_error_none);
    EXPECT_THAT(parsed.messages, ElementsAre("16: warning: no potential data specified"));
    int32_t width = 0;
    int32_t height = 0;
    q_domain_get_node_size(parsed.domain.get(), &width, &height);
    EXPECT_EQ(width, 81);
    EXPECT_EQ(height, 39);
    EXPECT_EQ(attributes_of(q_domain_get_first_attribute(parsed.domain.get())),
              "first=3;label=kept;second=2;");
    EXPECT_THAT(names_of(nodes_of(parsed.domain.get())), ElementsAre("A", "B.c", "N", "I"));
}

TEST_F(NetParseWhole, ReadsNodes) {
    EXPECT_STREQ(q_node_get_label(node("A")), "an \"A\"");
    int32_t x = 0;
    int32_t y = 0;
    q_node_get_position(node("A"), &x, &y);
    EXPECT_EQ(x, -10);
    EXPECT_EQ(y, 20);
    EXPECT_EQ(q_node_get_number_of_states(node("A")), 3U);
    EXPECT_STREQ(q_node_get_state_label(node("A"), 1), "y");
    EXPECT_STREQ(q_node_get_state_label(node("A"), 2), "");
    EXPECT_EQ(attributes_of(q_node_get_first_attribute(node("A"))), "note=n;remark=r;");
    EXPECT_EQ(q_node_get_category(node("B.c")), q_category_chance);
    EXPECT_EQ(q_node_get_kind(node("B.c")), q_kind_discrete);
    EXPECT_EQ(q_node_get_subtype(node("B.c")), q_subtype_boolean);
    EXPECT_EQ(q_node_get_number_of_states(node("B.c")), 2U);
}

TEST_F(NetParseWhole, ReadsStateValues) {
    constexpr double infinite = std::numeric_limits<double>::max();
    const auto values_of = [&](const char* name, size_t count) {
        std::vector<double> values;
        for (size_t i = 0; i < count; ++i) values.push_back(q_node_get_state_value(node(name), i));
        return values;
    };
    EXPECT_EQ(q_node_get_subtype(node("N")), q_subtype_number);
    EXPECT_THAT(values_of("N", 2), ElementsAre(-1, 2.5));
    EXPECT_EQ(q_node_get_subtype(node("I")), q_subtype_interval);
    EXPECT_THAT(values_of("I", 4), ElementsAre(-infinite, -1, 1, infinite));
}

TEST_F(NetParseWhole, ReadsLinksAndTables) {
    const q_table_t table = q_node_get_table(node("B.c"));
    EXPECT_THAT(names_of(listed(q_node_get_parents(node("B.c")))), ElementsAre("N", "A"));
    EXPECT_THAT(names_of(listed(q_table_get_nodes(table))), ElementsAre("N", "A", "B.c"));
    EXPECT_THAT(data_of(table), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
    EXPECT_THAT(names_of(listed(q_node_get_parents(node("N")))), ElementsAre("I"));
    EXPECT_THAT(data_of(q_node_get_table(node("N"))), testing::Each(1.0));
}

TEST(NetParse, FilesAndTexts) {
    const temporary_file file("net {}\n\nx");
    EXPECT_THAT(parse_result(file.path).messages, ElementsAre("3: unknown object type: x"));
    EXPECT_THAT(parse_result("% text\nnet\n{}\n\nx").messages, ElementsAre("16: unknown object type: x"));

    const temporary_file with_null(std::string("net {}\0node a {}", 16));
    EXPECT_THAT(parse_result(with_null.path).messages, ElementsAre("1: warning: null character ignored"));
    const temporary_file empty("");
    EXPECT_NE(parse_result(empty.path).domain, nullptr);
}

TEST(NetParse, NoFile) {
    for (const std::string& source :
         {testing::TempDir() + "no_such.net", testing::TempDir(), std::string(), std::string("net"),
          std::string("node a {}"), std::string("class A.b {")}) {
        const parse_result parsed(source);
        EXPECT_EQ(parsed.code, q_error_io) << source;
        EXPECT_THAT(parsed.messages, testing::IsEmpty()) << source;
    }
    EXPECT_EQ(q_net_parse_domain(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(q_error_code(), q_error_usage);
}

TEST(NetParse, NeedsNoHandler) {
    EXPECT_EQ(q_net_parse_domain("net {} x", nullptr, nullptr), nullptr);
    EXPECT_EQ(q_error_code(), q_error_parse);
}

// Whichever allocation fails: one message, nothing left behind.
TEST(NetParse, LackOfMemory) {
    if (!allocation_faults::are_possible()) GTEST_SKIP();
    const std::string source = std::string("net {}") + whole_network;
    for (size_t n = 0;; ++n) {
        size_t errors = 0;
        const auto count = [](size_t, const char* message, void* data) {
            if (!std::string_view(message).starts_with("warning: ")) ++*static_cast<size_t*>(data);
        };
        allocation_faults plan(n, false);
        const q_domain_t domain = q_net_parse_domain(source.c_str(), count, &errors);
        const q_error_t code = q_error_code();
        const bool fired = plan.stop();
        if (domain != nullptr) q_domain_delete(domain);
        EXPECT_EQ(plan.leaked(), 0U);
        if (!fired) break;
        if (domain != nullptr) continue;  // only the index of names was not made
        EXPECT_EQ(code, q_error_no_memory) << n;
        EXPECT_EQ(errors, 1U) << n;
    }
}

TEST(NetParse, KeepsTheLocaleOfTheCaller) {
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) GTEST_SKIP() << "no other locale installed";
    std::string during;
    const auto hear = [](size_t, const char*, void* data) {
        *static_cast<std::string*>(data) = std::setlocale(LC_ALL, nullptr);
    };
    EXPECT_EQ(q_net_parse_domain("net {} x", hear, &during), nullptr);
    EXPECT_EQ(during, "C");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    std::setlocale(LC_ALL, "C");
}

}  // namespace
