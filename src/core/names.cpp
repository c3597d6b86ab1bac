#include "names.h"

#include <algorithm>

namespace quarn {

bool is_identifier(std::string_view name) noexcept {
    return !name.empty() && is_letter(name.front()) &&
           std::ranges::all_of(name, [](char c) { return is_letter(c) || is_digit(c); });
}

bool is_compound_name(std::string_view name) noexcept {
    for (;;) {
        const std::size_t dot = name.find('.');
        if (!is_identifier(name.substr(0, dot))) return false;
        if (dot == std::string_view::npos) return true;
        name.remove_prefix(dot + 1);
    }
}

}  // namespace quarn
