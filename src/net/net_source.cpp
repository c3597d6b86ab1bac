#include "net_source.h"

#include "net_lexer.h"
#include "net_parser.h"
#include "text_file.h"

namespace quarn {
namespace {

bool begins_as_network(net_lexer& lexer) {
    if (lexer.next() != token_name) return false;
    if (lexer.text() == "class") return lexer.next() == token_name && lexer.next() == '{';
    return lexer.text() == "net" && lexer.next() == '{';
}

// Text that begins with `net {` or `class NAME {`; anything else names a file.
bool is_net_text(const char* source) { return begins_as(source, begins_as_network); }

}  // namespace

std::unique_ptr<domain> read_net(const char* source, parse_reports& reports) {
    if (is_net_text(source)) return parse_net(source, position_unit::character, reports);
    return parse_net(read_file(source), position_unit::line, reports);
}

}  // namespace quarn
