#include "net_lexer.h"

#include <charconv>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace quarn;
using namespace std::string_literals;

std::string in_digits(double value) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

// Everything the lexer makes of a text: tokens between blanks, messages as <position: message>.
struct transcript {
    explicit transcript(std::string_view text, position_unit unit = position_unit::character) {
        parse_reports reports(
            [](size_t position, const char* message, void* data) {
                static_cast<transcript*>(data)->add("<" + std::to_string(position) + ": " + message + ">");
            },
            this);
        net_lexer lexer(text, unit, reports);
        try {
            for (token next; (next = lexer.next()) != token_end;) add(shown(next, lexer));
        } catch (const reported_failure& failed) {
            EXPECT_EQ(failed.code(), q_error_parse);
        }
    }

    void add(const std::string& part) { all += (all.empty() ? "" : " ") + part; }

    static std::string shown(token shown, const net_lexer& lexer) {
        switch (shown) {
        case token_name: return lexer.text();
        case token_dotted_name: return "dotted:" + lexer.text();
        case token_number: return "number:" + in_digits(lexer.number());
        case token_string: return "\"" + lexer.text() + "\"";
        case token_error: return "error";
        default: return {static_cast<char>(shown)};
        }
    }

    std::string all;
};

struct lexer_case {
    std::string text;
    std::string tokens;
};

void expect_tokens(const std::vector<lexer_case>& cases) {
    for (const lexer_case& tested : cases)
        EXPECT_EQ(transcript(tested.text).all, tested.tokens) << tested.text;
}

TEST(NetLexer, BlanksAndComments) {
    expect_tokens({
        {"", ""},
        {" \t\v\f\r\n", ""},
        {"a%b \"c\nd", "a d"},
        {"a % no newline", "a"},
        {"#()*+,-:;=?{|}", "# ( ) * + , - : ; = ? { | }"},
        {"a\0b"s, "a <1: warning: null character ignored> b"},
        {"%\0\n"s, "<1: warning: null character ignored>"},
        {"a ! b", "a <3: unexpected character: `!'>"},
        {"\xC3\xA9", "<1: unexpected character: `\xC3'>"},
    });
}

TEST(NetLexer, Names) {
    expect_tokens({
        {"_a1 B", "_a1 B"},
        {"a.b a._", "dotted:a.b dotted:a._"},
        {"a{b", "a { b"},
        {"a.1", "<3: `.' must be followed by a letter or an `_'>"},
        {"a. b", "<2: `.' must be followed by a letter or an `_'>"},
        {"a..b", "<4: `.' must be followed by a letter or an `_'>"},
    });
}

TEST(NetLexer, Numbers) {
    expect_tokens({
        {"1 -0.5 .25 1e-3 +7 5. -.5E+1",
         "number:1 number:-0.5 number:0.25 number:0.001 number:7 number:5 number:-5"},
        {"1-2+3", "number:1 number:-2 number:3"},
        {"1.5.5", "number:1.5 number:0.5"},
        {"1e 1e+ 2ex", "number:1 e number:1 e + number:2 ex"},
        {"0x10 inf nan -inf", "number:0 x10 inf nan - inf"},
        {"- 1 +x --1", "- number:1 + x - number:-1"},
        {"- .", "- error"},
        {". 1", "error number:1"},
        {"-.e1 +.", "error e1 error"},
        {"1e400 -1e400 1e99999999999999999999", "number:inf number:-inf number:inf"},
        {"1e-400 1e-99999999999999999999", "number:0 number:0"},
        {std::string(400, '9'), "number:inf"},
        {"0." + std::string(400, '0') + "1", "number:0"},
        {"1" + std::string(400, '0') + "e-400", "number:1"},
        {"1.7976931348623157e308", "number:1.7976931348623157e+308"},
    });
}

TEST(NetLexer, Strings) {
    expect_tokens({
        {R"("a%b" "")", R"("a%b" "")"},
        {R"("\"\'\?\\")", "\"\"'?\\\""},
        {R"("\a\b\f\n\r\t\v")", "\"\a\b\f\n\r\t\v\""},
        {R"("\101\7\1234\x41\x00041g")", "\"A\7S4AAg\""},
        {R"("\377\xff")", "\"\xFF\xFF\""},
        {"\"a\\\nb\"", "\"ab\""},
        {R"("\0")", "<3: warning: null character in string> \"\0\""s},
        {"\"\0\""s, "<2: warning: null character in string> \"\0\""s},
        {R"("\q")", R"(<3: illegal escape sequence: `\q'>)"},
        {R"("\xg")", R"(<3: illegal escape sequence: `\x'>)"},
        {R"("\x100")", R"(<6: illegal escape sequence: `\x'>)"},
        {R"("\400")", R"(<5: illegal escape sequence: `\4'>)"},
        {"\"a\nb\"", "<2: string did not end>"},
        {"\"a", "<2: string did not end>"},
        {"\"a\\", "<3: string did not end>"},
    });
}

TEST(NetLexer, CountsLines) {
    EXPECT_EQ(transcript("a\n% b\n\"c\\\nd\"\n!", position_unit::line).all,
              "a \"cd\" <5: unexpected character: `!'>");
    EXPECT_EQ(transcript("\n\"a\n", position_unit::line).all, "<2: string did not end>");
    EXPECT_EQ(transcript("\n\n.\n", position_unit::line).all, "error");
}

TEST(ParseReports, CutMessagesAndCountErrors) {
    std::string heard;
    parse_reports reports(
        [](size_t, const char* message, void* data) { *static_cast<std::string*>(data) = message; }, &heard);
    reports.report(1, "warning: %s", "x");
    EXPECT_EQ(reports.error_count(), 0U);
    reports.report(1, "%s", std::string(600, 'x').c_str());
    EXPECT_EQ(reports.error_count(), 1U);
    EXPECT_EQ(heard, std::string(511, 'x'));
}

}  // namespace
