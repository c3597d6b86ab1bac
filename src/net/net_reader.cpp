#include "net_reader.h"

#include <algorithm>
#include <limits>

namespace quarn {

token net_reader::next() {
    if (!is_pushed_back_) last_ = net_lexer::next();
    is_pushed_back_ = false;
    return last_;
}

bool net_reader::accept(char character) {
    if (next() == character) return true;
    push_back();
    return false;
}

void net_reader::expect(char character) {
    if (next() != character) fail("`%c' expected", character);
}

const std::string& net_reader::expect_name() {
    next();
    if (!is_name()) fail("name expected");
    return text();
}

double net_reader::expect_number() {
    if (next() != token_number) fail("number expected");
    return number();
}

const std::string& net_reader::expect_string(const char* message) {
    if (next() != token_string) fail("%s", message);
    return text();
}

bool net_reader::next_attribute(std::string& name) {
    if (next() == '}') return false;
    if (!is_name()) fail("`}' or an attribute name expected");
    name = text();
    return true;
}

std::string net_reader::expect_string_value(const char* message) {
    expect('=');
    std::string value = expect_string(message);
    expect(';');
    return value;
}

int32_t truncate(double number) noexcept {
    using limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp(number, double{limits::min()}, double{limits::max()}));
}

}  // namespace quarn
