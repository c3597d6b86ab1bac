#include "net_lexer.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace quarn;
using namespace std::string_literals;

// Everything the lexer makes of a text: tokens between blanks, messages as <position: message>.
struct transcript {
    explicit transcript(std::string_view text) {
        parse_reports reports(
            [](size_t position, const char* message, void* data) {
                static_cast<transcript*>(data)->add("<" + std::to_string(position) + ": " + message + ">");
            },
            this);
        net_lexer lexer(text, position_unit::character, reports);
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
        case token_number: return "number:" + testing::PrintToString(lexer.number());
        case token_string: return "\"" + lexer.text() + "\"";
        case token_error: return "error";
        default: return {static_cast<char>(shown)};
        }
    }

    std::string all;
};

TEST(NetLexer, TokensAndMessages) {
    const std::pair<std::string, std::string> cases[] = {
        {"a%b \"c\nd", "a d"},
        {" \t\v\f\r\na % no newline", "a"},
        {"#()*+,-:;=?{|}", "# ( ) * + , - : ; = ? { | }"},
        {"a\0b"s, "a <1: warning: null character ignored> b"},
        {"a ! b", "a <3: unexpected character: `!'>"},
        {"a.1", "<3: `.' must be followed by a letter or an `_'>"},
        {"a..b", "<4: `.' must be followed by a letter or an `_'>"},
        {"1 -0.5 .25 1e-3 +7 5. -.5E+1",
         "number:1 number:-0.5 number:0.25 number:0.001 number:7 number:5 number:-5"},
        {"1-2+3", "number:1 number:-2 number:3"},
        {"1e 1e+ 2ex", "number:1 e number:1 e + number:2 ex"},
        {"0x10 inf nan -inf", "number:0 x10 inf nan - inf"},
        {"- 1 +x --1", "- number:1 + x - number:-1"},
        {"-.e1 +.", "error e1 error"},
        {"1e400 -1e400 1e99999999999999999999", "number:inf number:-inf number:inf"},
        {"1e-400 1e-99999999999999999999", "number:0 number:0"},
        {std::string(400, '9'), "number:inf"},
        {"1" + std::string(400, '0') + "e-400", "number:1"},
        {R"("\"\'\?\\")", "\"\"'?\\\""},
        {R"("\a\b\f\n\r\t\v")", "\"\a\b\f\n\r\t\v\""},
        {R"("\101\7\1234\x41\x00041g")", "\"A\7S4AAg\""},
        {"\"a\\\nb\"", "\"ab\""},
        {R"("\0")", "<3: warning: null character in string> \"\0\""s},
        {R"("\8")", R"(<3: illegal escape sequence: `\8'>)"},
        {R"("\xg")", R"(<3: illegal escape sequence: `\x'>)"},
        {R"("\x100")", R"(<6: illegal escape sequence: `\x'>)"},
        {R"("\400")", R"(<5: illegal escape sequence: `\4'>)"},
        {"\"a\nb\"", "<2: string did not end>"},
        {"\"a\\", "<3: string did not end>"},
        {"_a1.b a._ ab", "dotted:_a1.b dotted:a._ ab"},
        {R"("a%b" "" "\377\xff")", "\"a%b\" \"\" \"\xFF\xFF\""},
    };
    for (const auto& [text, tokens] : cases) EXPECT_EQ(transcript(text).all, tokens) << text;
}

}  // namespace
