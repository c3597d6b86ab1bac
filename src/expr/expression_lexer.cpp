#include "expression_lexer.h"

#include "names.h"

namespace quarn {
namespace {

constexpr std::string_view punctuation = "#()*+,-/:;?^{|}";

constexpr token comparison(q_operator_t op) noexcept { return static_cast<token>(-op); }

}  // namespace

token expression_lexer::next() {
    if (!in_.skip_blanks()) return token_end;
    const char first = in_.ahead();
    if (is_digit(first) || first == '.') return in_.read_number();
    if (is_letter(first)) return in_.read_name();
    if (first == '"') return in_.read_string();
    in_.advance();
    if (punctuation.find(first) != std::string_view::npos) return static_cast<token>(first);
    return read_comparison(first);
}

token expression_lexer::accept(std::string_view firsts) {
    const char first = in_.upcoming();
    return first != '\0' && firsts.find(first) != std::string_view::npos ? next() : token{};
}

token expression_lexer::read_comparison(char first) {
    const auto is_followed_by = [&](char second) {
        if (in_.ahead() != second) return false;
        in_.advance();
        return true;
    };
    switch (first) {
    case '<':
        if (is_followed_by('=')) return comparison(q_operator_less_than_or_equals);
        return comparison(is_followed_by('>') ? q_operator_not_equals : q_operator_less_than);
    case '>':
        return comparison(is_followed_by('=') ? q_operator_greater_than_or_equals : q_operator_greater_than);
    case '=': is_followed_by('='); return comparison(q_operator_equals);
    case '!':
        if (!is_followed_by('=')) in_.fail("`!' must be followed by `='");
        return comparison(q_operator_not_equals);
    default: in_.fail("unexpected character: `%c'", first);
    }
}

}  // namespace quarn
