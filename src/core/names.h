// The form of names: C identifiers, judged as in the "C" locale without switching to it.
#pragma once

#include <string_view>

namespace quarn {

constexpr bool is_letter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
constexpr bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }

bool is_identifier(std::string_view name) noexcept;
// Identifiers joined by single dots.
bool is_compound_name(std::string_view name) noexcept;

}  // namespace quarn
