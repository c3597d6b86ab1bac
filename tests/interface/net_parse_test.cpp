#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <quarn.h>

#include "scenarios.h"
#include "texts.h"

namespace {

using testing::ElementsAre;

struct parse_result : heard {
    explicit parse_result(const std::string& source)
        : domain(q_net_parse_domain(source.c_str(), hear, static_cast<heard*>(this))), code(q_error_code()) {}

    owned_domain domain;
    q_error_t code;
};

// Each text with an @ where the message is to say it is, ' for ", and two nodes and a potential before it.
TEST(NetParse, TellsWhatIsWrongAndWhere) {
    const std::string normals = "continuous node x {} continuous node y {} potential (y | a x) { data = (";
    const std::string model = "continuous node x {} function f {} potential (f | a x) { ",
                      model_of_a = model + "model_nodes = (a); model_data = (";
    const std::string data_of_a = "potential (a) { data = (1 ";
    const std::string chain_of_b_and_c = "node c {} potential (c b) { data = ";
    const char* const undirected = "undirected links can only be specified for discrete chance nodes";
    const char* const real_in_chain = "real-valued function nodes are not allowed in chain potentials";
    const char* const unsuitable = "API error: The supplied expression is invalid (e.g., wrong type).";
    const struct {
        std::string text, message;
        q_error_t code = q_error_parse;
    } cases[] = {
        {"{@", "unexpected token"},
        {"discrete utility@ a {}", "keyword `node', `decision', or `function' expected"},
        {"continuous decision@ c {}", "keyword `node' expected"},
        {"continuous node x {} decision d@ {}", "API error: LIMIDs with CG nodes are not supported.",
         q_error_cg_limids_not_supported},
        {"net x@ {}", "`{' expected"},
        {"net { 1@ }", "`}' or an attribute name expected"},
        {"net { a 1@; }", "`=' expected"},
        {"net { a = 1@; }", "value of a user-defined attribute must be a string"},
        {"net { a = 'x' }@", "`;' expected"},
        {"net { a.b = 'x';@ }",
         "API error: Names used for classes, nodes, and attributes must have the same form as a C "
         "identifier.",
         q_error_invalid_name},
        {"net { node_size = 1@; }", "`(' expected"},
        {"net { node_size = (1 -0.1@); }", "<number> must be nonnegative"},
        {"net { node_size = (1 2 3@); }", "`)' expected"},
        {"node {@", "name expected"},
        {"node b@ {}", "a node with name `b' already exists"},
        {"node c { label = 1@; }", "string expected"},
        {"node c { x = 1@; }", "value of a user-defined attribute must be a string"},
        {"node c { states = ()@; }", "empty list of states"},
        {"node c { states = ('x' y@); }", "state or `)' expected"},
        {"node c { states = ('x'); states@ = ('x'); }", "states specified twice (or more)"},
        {"node c { subtype = bool@; }", "`label', `boolean', `number', or `interval' expected"},
        {"node c { subtype = boolean; states = ('x'); }@", "a boolean node must have exactly two states"},
        {"utility u { states@ = ('x'); }", "only discrete nodes can have states"},
        {"function f { subtype@ = x; }", "subtype designations only make sense for discrete nodes"},
        {"continuous node x { state_values@ = (1); }", "only discrete nodes can have state values"},
        {"node c { state_values@ = (1); }", "only numeric nodes can have state values"},
        {"node c { subtype = number; state_values@ = (1); }", "states must be specified before state values"},
        {"node c {subtype=number; states=('x'); state_values=(1); state_values@=(1);}",
         "state values have already been specified"},
        {"node c {subtype=number; states=('x'); state_values=(x@);}", "state value expected"},
        {"node c {subtype=number; states=('x'); state_values=(1 2)@;}", "incorrect number of state values"},
        {"potential ()@", "empty child node list"},
        {"potential (1@)", "`|', `)', or a node name expected"},
        {"potential (c@)", "node `c' not found"},
        {"potential (a | a@)", "node `a' appears twice in potential specification"},
        {"potential (b)@ {}", "potential specified twice for node `b'"},
        {"potential (a | b)@ {}", "adding the link b --> a creates a directed cycle"},
        {"utility u {} potential (a | u@)", "utility node `u' specified as parent"},
        {"continuous node x {} potential (a | x@)",
         "continuous node `x' is not allowed as parent of discrete node `a'"},
        {"continuous node x {} function f {} potential (f | x a@)", "discrete parents must appear first"},
        {"continuous node x {} function f {} function g {} potential (g | f x@)",
         "real-valued function parents must appear last"},
        {"utility u {} potential (u a@)", undirected},
        {"continuous node x {} potential (a x@)", undirected},
        {"function f {} potential (f a@)", real_in_chain},
        {"function f {} node c {} potential (a c | f@)", real_in_chain},
        {"node c {} potential (c a | c@)", "node `c' appears twice in potential specification"},
        {"node c {} potential (c a b)@",
         "the directed link a --> b should have been included in the potential for b"},
        {"node c {} potential (c a | b)@",
         "the directed link a --> b should have been included in the potential for b"},
        {chain_of_b_and_c + "(1 1);} node d {} potential (c d b)@", "links specified twice for c"},
        {chain_of_b_and_c + "(1 1);} potential (a c)@", "adding chain potential creates a directed cycle"},
        {chain_of_b_and_c + "(1 1);} potential (a | c)@", "adding the link c --> a creates a directed cycle"},
        {"function f {} node d {} potential (f | a) {model_nodes=();} potential (d | f) {data=(1);}"
         " potential (d b)@",
         "adding chain potential creates a cyclic functional dependency"},
        {"node c {} node d {} potential (c d | a) {data=(1 1);} potential (d)@",
         "potential for node d must include all parents"},
        {chain_of_b_and_c + "(1 -1@);}", "warning: negative value in probability potential", q_error_none},
        {chain_of_b_and_c + "(1 1); data@", "`data' attribute specified twice"},
        {chain_of_b_and_c + "(1 1); dat@", "unknown field: `dat'"},
        {chain_of_b_and_c + "(1 1); experience@",
         "experience data cannot be specified for chain graph potentials"},
        {chain_of_b_and_c + "(1 1); fading@", "fading data cannot be specified for chain graph potentials"},
        {chain_of_b_and_c + "(1 1); model_data@", "models cannot be specified for chain graph potentials"},
        {"node c {} potential (c b) {}@", "warning: no potential data specified", q_error_none},
        {"decision d {} potential (d) { experience@",
         "experience data can only be specified for chance nodes"},
        {"potential (a) { experience = (1); experience@", "`experience' attribute specified twice"},
        {"potential (a) { experience = (1 2@", "`)' expected"},
        {"continuous node x {} potential (x) { fading@",
         "fading data can only be specified for discrete chance nodes"},
        {"potential (a) { fading = (1); fading@", "`fading' attribute specified twice"},
        {"function f {} node c {} potential (f | a) {data@=(1);}",
         "`data' attribute is not allowed for real-valued function nodes"},
        {"discrete function f {} potential (f | a) {data=(1);} node c {} potential (c | a f)@ {}",
         "adding the link f --> c creates a cyclic functional dependency"},
        {"discrete decision d {} potential (d) {data=(-1@);}",
         "warning: negative value in probability potential", q_error_none},
        {"utility u {} potential (u | a) {data=(-1 -2);}", "", q_error_none},
        {"potential (a) { }@", "warning: no potential data specified", q_error_none},
        {"potential (a) { dat@ = (1 1); }", "unknown field: `dat'"},
        {"potential (a) { data = (1 1); data@ = (1 1); }", "`data' attribute specified twice"},
        {"potential (a) { data = (1)@; }", "number expected"},
        {"potential (a) { data = ((1 1);@ }", "`)' expected"},
        {"potential (a) { data = (1 1 1@); }", "`)' expected"},
        {"potential (a) {data=(1 -1@);}", "warning: negative value in probability potential", q_error_none},
        {normals + ")@ normal(0, 1)", "the keyword `normal' was expected"},
        {normals + "normal 0@", "`(' expected"},
        {normals + "normal(,@", "<number> or <node name> expected in mean value expression"},
        {normals + "normal(1 + +@", "<number> or <node name> expected in mean value expression"},
        {normals + "normal(2*x *@", "expected one of: ,+-"},
        {normals + "normal(2 * 3@", "name expected"},
        {normals + "normal(z@", "node `z' not found"},
        {normals + "normal(1 + a@", "node `a' is not part of the table"},
        {normals + "normal(1+2*y@", "node `y' is not part of the table"},
        {normals + "normal(0, x@", "variance (a nonnegative <number>) expected"},
        {normals + "normal(0, -1@", "variance must be nonnegative"},
        {normals + "normal(0, 1 2@", "`)' expected"},
        {normals + "normal(0, 1) normal(0, 1) normal@", "`)' expected"},
        {model + "model_nodes = (1@", "name expected"},
        {model + "model_nodes = (c@", "node `c' not found"},
        {model + "model_nodes = (f@", "node `f' is not a parent of node `f'"},
        {model + "model_nodes = (b@", "node `b' is not a parent of node `f'"},
        {model + "model_nodes = (a x@", "the `model_nodes' attribute must contain discrete nodes only"},
        {model + "model_nodes = (a a@", "node `a' appears twice in `model_nodes' attribute"},
        {model + "model_nodes = (); model_nodes@", "`model_nodes' attribute specified twice"},
        {"continuous node x {} potential (x) { model_nodes@", "models cannot be specified for CG nodes"},
        {model + "model_data@", "`model_nodes' attribute has not been specified"},
        {model_of_a + "1, 2); model_data@", "`model_data' attribute specified twice"},
        {model_of_a + ")@", "`,' expected"},
        {model_of_a + "1)@", "`,' expected"},
        {model_of_a + "1, 2,@", "`)' expected"},
        {model_of_a + "1 / x, x < 1@, 2)", unsuitable, q_error_invalid_expression},
        {model_of_a + "not(x)@", unsuitable, q_error_invalid_expression},
        {model_of_a + "c@", "no such node: c"},
        {model_of_a + "1, 1 + if(b == '1', x, 2)@", "node `b' is not a parent of node `f'"},
        {model + "samples_per_interval = 0@", "`samples_per_interval' must be a positive integer"},
        {model + "samples_per_interval = 1.5@", "`samples_per_interval' must be a positive integer"},
        {model + "samples_per_interval = 1e999@", "`samples_per_interval' must be a positive integer"},
        {model + "samples_per_interval = x@", "`samples_per_interval' must be a positive integer"},
        {"node !@", "unexpected character: `!'"},
        {"node c.1@", "`.' must be followed by a letter or an `_'"},
        {"node c..d@", "`.' must be followed by a letter or an `_'"},
        {"'c@\nd'", "string did not end"},
        {"'c\\@", "string did not end"},
        {"'\\8@'", "illegal escape sequence: `\\8'"},
        {"'\\400@'", "illegal escape sequence: `\\4'"},
        {"'\\x@g'", "illegal escape sequence: `\\x'"},
        {"'\\x100@'", "illegal escape sequence: `\\x'"},
        {"node c { label = '\\0@'; }", "warning: null character in string", q_error_none},
        {data_of_a + "1e@+ 1", "`)' expected"},
        {data_of_a + "2ex@", "`)' expected"},
        {data_of_a + "0x10@", "`)' expected"},
        {data_of_a + "inf@", "number expected"},
        {data_of_a + "-@ 1", "number expected"},
        {data_of_a + "-.@e1", "number expected"},
    };
    for (const auto& [text, message, code] : cases) {
        std::string source = "net {} node a { states = ('0' '1'); } node b { states = ('0' '1'); } "
                             "potential (b | a) { data = (1 0 0 1); } " +
                             text;
        std::ranges::replace(source, '\'', '"');
        std::vector<std::string> expected;
        if (const size_t position = source.find('@'); position != std::string::npos) {
            source.erase(position, 1);
            expected.push_back(std::to_string(position) + ": " + message);
        }
        const parse_result parsed(source);
        EXPECT_EQ(parsed.messages, expected) << source;
        EXPECT_EQ(parsed.code, code) << source;
        EXPECT_EQ(parsed.domain == nullptr, code != q_error_none) << source;
    }
    // Only an unknown subtype leaves the rest readable.
    EXPECT_EQ(parse_result("net {} node a { subtype = x; } node b { subtype = y; }").messages.size(), 2U);
}

TEST(NetParse, ReadsStringsAndNumbers) {
    const std::pair<std::string, std::string> strings[] = {{R"(\"\'\?\\)", "\"'?\\"},
                                                           {R"(\a\b\f\n\r\t\v)", "\a\b\f\n\r\t\v"},
                                                           {R"(\101\7\1234\x41\x00041g)", "A\7S4AAg"},
                                                           {"a%b\\377\\xff\\\nc", "a%b\377\377c"}};
    for (const auto& [given, text] : strings)
        EXPECT_EQ(q_domain_get_attribute(read("net { a = \"" + given + "\"; }").get(), "a"), text);
    // Signs belong to the next number, and part what is not parted by blanks.
    const std::string numbers = "1-2+3 .25 1e-3 +7 5.-.5E+1 1e-400 "
                                "1e-99999999999999999999 1e400 -1e400 " +
                                std::string(400, '9') + " 1" + std::string(400, '0') + "e-400";
    const double wanted[] = {1, -2, 3, .25, .001, 7, 5, -5, 0, 0, HUGE_VAL, -HUGE_VAL, HUGE_VAL, 1};
    const owned_domain domain = read("net {} node n { states = (" + repeated(std::size(wanted), "\"\" ") +
                                     "); } utility u {} potential (u | n) { data = (" + numbers + "); }");
    EXPECT_THAT(data_of(q_node_get_table(node_at(domain.get(), 1))), testing::ElementsAreArray(wanted));
}

// A table that no memory could hold costs no more than the text; nor do parentheses cost stack.
TEST(NetParse, HugeTablesAreNotMadeBeforeTheirNumbersAreThere) {
    std::string source = "net {} ";
    std::string parents;
    for (int i = 0; i < 70; ++i) {
        parents += " a" + std::to_string(i);
        source += "node a" + std::to_string(i) + " { states = (\"0\" \"1\"); } ";
    }
    const std::string open(100000, '('), close(99999, ')');
    const auto read = [&](const char* child, const char* entry) {
        return parse_result(source + child + " b {} potential (b |" + parents + ") { data = " + open + entry +
                            close);
    };
    for (const char* child : {"node", "decision", "utility"})
        EXPECT_THAT(read(child, "1 1").messages, ElementsAre(testing::EndsWith(": number expected")))
            << child;
    EXPECT_THAT(read("continuous node", "normal(1, 1)").messages,
                ElementsAre(testing::EndsWith(": the keyword `normal' was expected")));
    EXPECT_THAT(parse_result(source + "function f {} potential (f |" + parents + ") { model_nodes = (" +
                             parents + "); model_data = (1); }")
                    .messages,
                ElementsAre(testing::EndsWith(": `,' expected")));
}

const std::string whole_network = R"(net { node_size = (80.5 39.4); first = "1"; label = "kept"; }
node A { label = "an \"A\""; position = (-10.9 20.9); states = ("x" "y" ""); remark = "r"; }
discrete node B.c { subtype = boolean; }
node N { subtype = number; states = ("" ""); state_values = (-1 + 2.5); }
node I { subtype = interval; states = ("" "" ""); state_values = (-infinity - 1 1 infinity); }
potential (B.c | N A) { data = (((1 2) (3 4) (5 6)) ((7 8) 9 10 11 12)); }
potential (N | I) { } potential (I) { model_nodes = (); samples_per_interval = 7; }
continuous node a { label = "c"; } continuous node b { } continuous node d.x { }
function F { } discrete function k { states = ("0" "1"); }
potential (d.x | N A b a F) { data = (
    ((normal (1.5 + 2 * a, 1)      normal(1.5+2*a-b,2)        normal(-2 * b - 1, .5))
     (normal(a+.5*b+1-3+a-2*b, 3)  normal(0 - -4 * a + -1, 0) normal(b, 2)))); }
potential (k | N a) { data = (0.25 0.75); }
function g { } potential (g | N a) { model_nodes = (N); model_data = (a + 1, if(a > 2, max(a, 3, N), 4)); samples_per_interval = 3; }
node v { states = ("0" "1"); } node w { } potential (w v | I) { data = (1 2 3 4 5 6); }
potential (v | N I) { data = (1 2 3 4 5 6 7 8 9 10 11 12); experience = (1 2 3 4 5 6); fading = (1 2 3 4 5 6); }
net { second = "2"; first = "3"; })";

// What is written as it is read is read by net_writer_test.cpp.
TEST(NetParse, ReadsWhatIsWrittenInAnotherWay) {
    const temporary_file file("\n%" + std::string(100000, 'x') + "\n" + whole_network);
    const parse_result parsed(file.path);
    EXPECT_EQ(parsed.code, q_error_none);
    EXPECT_THAT(parsed.messages, ElementsAre("9: warning: no potential data specified"));
    q_domain_t domain = parsed.domain.get();
    const auto node = [&](const char* name) { return q_domain_get_node_by_name(domain, name); };
    q_node_t a = node("A"), b = node("B.c"), n = node("N"), i = node("I");
    int32_t x = 0, y = 0;
    q_domain_get_node_size(domain, &x, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(81, 39));
    EXPECT_STREQ(q_domain_get_attribute(domain, "first"), "3");
    q_node_get_position(a, &x, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(-10, 20));
    EXPECT_EQ(q_node_get_model(i), nullptr) << "without expressions";
    std::vector<double> values;
    for (size_t state = 0; state < 2; ++state) values.push_back(q_node_get_state_value(n, state));
    for (size_t state = 0; state < 4; ++state) values.push_back(q_node_get_state_value(i, state));
    constexpr double infinite = std::numeric_limits<double>::max();
    EXPECT_THAT(values, ElementsAre(-1, 2.5, -infinite, -1, 1, infinite));
    EXPECT_THAT(listed(q_node_get_parents(b)), ElementsAre(n, a));
    EXPECT_THAT(data_of(q_node_get_table(b)), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));

    q_node_t dx = node("d.x");
    const double parameters[][4] = {{1.5, 2, 0, 1},   {1.5, 2, -1, 2}, {-1, 0, -2, .5},
                                    {-2, 2, -1.5, 3}, {-1, 4, 0, 0},   {0, 0, 1, 2}};
    for (size_t c = 0; c < 6; ++c)
        EXPECT_THAT(parameters[c],
                    ElementsAre(q_node_get_cg_intercept(dx, c), q_node_get_cg_coefficient(dx, node("a"), c),
                                q_node_get_cg_coefficient(dx, node("b"), c), q_node_get_cg_variance(dx, c)))
            << c;
}

TEST(NetParse, TakesTextsAndFiles) {
    const temporary_file with_null(std::string("net { a = \"b\\\nc\"; }\n\0\nx", 24));
    EXPECT_THAT(parse_result(with_null.path).messages,
                ElementsAre("3: warning: null character ignored", "4: unknown object type: x"));
    EXPECT_THAT(parse_result("% text\nnet\n{}\n\nx").messages, ElementsAre("16: unknown object type: x"));
    EXPECT_THAT(parse_result("class A { }").messages, ElementsAre("5: unknown object type: class"));
    EXPECT_EQ(parse_result("net {} " + std::string(600, 'x')).messages[0].size(), 5 + 511u) << "cut";
    EXPECT_EQ(q_net_parse_domain("net {} x", nullptr, nullptr), nullptr);
    EXPECT_EQ(q_error_code(), q_error_parse);
    for (const char* source : {"/no_such.net", "/", "", "net", "node a {}", "class A.b {"}) {
        const parse_result parsed(source);
        EXPECT_EQ(parsed.code, q_error_io) << source;
        EXPECT_THAT(parsed.messages, testing::IsEmpty()) << source;
    }
}

// Each definition of nodes with ' for ", and what is to be said; handlers may do without data.
TEST(NetParse, ReadsTheOlderDialect) {
    const struct {
        std::string text, message;
        q_error_t code = q_error_parse;
    } cases[] = {
        {"1", "2: node name (or end-of-file) expected"},
        {"a 2", "2: string expected"},
        {"a '' (", "2: number expected"},
        {"a '' 2 b (", "2: number expected"},
        {"a '' 2 1", "2: parent node name or a left parenthesis expected"},
        {"a '' 2 (1)", "2: number expected"},
        {"a '' 2 (1 1 1)", "2: `)' expected"},
        {"a '' 2 (1 -1)", "2: warning: negative value in probability potential", q_error_none},
        {"a '' 2 (1 1)\na", "3: node `a' has already been defined (at line 2)"},
        {"a '' 1 b 2 (1 1)\n\nb '' 3", "4: number of states (3) does not match previous usage (line 2)"},
        {"a '' 2 b 3 b 3", "2: node `b' appears twice as a parent of `a'"},
        {"a '' 2 a 2", "2: adding the link a --> a creates a directed cycle"},
        {"a '' 1 b 1 (1)\nb '' 1 a 1", "3: adding the link a --> b creates a directed cycle"},
        {"a '' 1\nb 2 (1 1)\n", "4: node `b' (used at line 3) has not been defined"},
    };
    static std::vector<std::string> heard;
    const auto read = [](std::string text) {
        std::ranges::replace(text, '\'', '"');
        const temporary_file file(text);
        heard.clear();
        return owned_domain(
            q_net_parse_domain_plain(file.path.c_str(), [](size_t position, const char* message) {
                heard.push_back(std::to_string(position) + ": " + message);
            }));
    };
    for (const auto& [text, message, code] : cases) {
        EXPECT_EQ(read("net 'a label' 80.5 39.4 1\n" + text) == nullptr, code != q_error_none) << text;
        EXPECT_EQ(q_error_code(), code) << text;
        EXPECT_THAT(heard, ElementsAre(message)) << text;
    }
    EXPECT_EQ(read("net '' 1 1 1 a '' 0"), nullptr);
    EXPECT_EQ(q_error_code(), q_error_usage) << "no states";
    for (const char* sizes : {"-1 1 1", "1 -1 1", "1 1 -1"}) {
        EXPECT_EQ(read(std::string("net '' ") + sizes), nullptr);
        EXPECT_THAT(heard, ElementsAre("1: node width and height, and scale factor must be nonnegative"));
    }

    const owned_domain domain = read("net '' 80.5 39.4 1 % size\n a 'A' 2 c 3 b.d 1 ((1 2) (3 4) (5 6))"
                                     " b.d '' 1 (7) c '' 3 b.d 1 (8 9 10)");
    EXPECT_THAT(heard, testing::IsEmpty());
    int32_t width = 0, height = 0;
    q_domain_get_node_size(domain.get(), &width, &height);
    EXPECT_EQ(std::pair(width, height), std::pair(81, 39));
    const auto node = [&](const char* name) { return q_domain_get_node_by_name(domain.get(), name); };
    EXPECT_STREQ(q_node_get_label(node("a")), "A");
    EXPECT_THAT(listed(q_node_get_parents(node("a"))), ElementsAre(node("c"), node("b.d")));
    EXPECT_THAT(data_of(q_node_get_table(node("a"))), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(data_of(q_node_get_table(node("c"))), ElementsAre(8, 9, 10));
}

// Whichever allocation fails: one message, nothing left behind. Names need no index.
TEST(NetParse, SurvivesLackOfMemory) {
    const auto parse = [](q_domain_t) {
        int errors = 0;
        const auto count = [](size_t, const char* message, void* data) {
            if (message[0] != 'w') ++*static_cast<int*>(data);
        };
        const owned_domain domain(q_net_parse_domain(whole_network.c_str(), count, &errors));
        const q_status_t status = outcome(domain.get());
        EXPECT_EQ(errors, domain == nullptr ? 1 : 0);
        return status;
    };
    expect_survives_lack_of_memory({"parse", [] { return owned_domain(); }, parse, true});
}

}  // namespace
