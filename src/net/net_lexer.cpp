#include "net_lexer.h"

#include <new>

#include "names.h"

namespace quarn {
namespace {

constexpr std::string_view punctuation = "#()*+,-:;=?{|}";

constexpr bool is_sign(char c) noexcept { return c == '+' || c == '-'; }

}  // namespace

token net_lexer::next() {
    try {
        return read_token();
    } catch (const std::bad_alloc&) {
        report("out-of-memory");
        throw reported_failure(q_error_no_memory);
    }
}

token net_lexer::read_token() {
    if (!skip_blanks()) return token_end;
    const char first = ahead();
    if (starts_number()) return read_signed_number();
    if (is_letter(first)) return read_name();
    if (first == '"') return read_string();
    advance();
    if (punctuation.find(first) == std::string_view::npos) fail("unexpected character: `%c'", first);
    return static_cast<token>(first);
}

// A sign without a number behind it is punctuation.
bool net_lexer::starts_number() const noexcept {
    const char first = ahead(is_sign(ahead()) ? 1 : 0);
    return is_digit(first) || first == '.';
}

token net_lexer::read_signed_number() {
    sign_ = is_sign(ahead()) ? ahead() : '\0';
    if (number_has_sign()) advance();
    return read_number();
}

bool begins_as(std::string_view source, bool (*begins)(net_lexer&)) {
    parse_reports unheard(nullptr, nullptr);
    net_lexer lexer(source, position_unit::character, unheard);
    try {
        return begins(lexer);
    } catch (const reported_failure& failed) {
        require(failed.code() == q_error_parse, failed.code());
        return false;
    }
}

}  // namespace quarn
