// Strings as the text languages write them.
#pragma once

#include <string>
#include <string_view>

namespace quarn {

// Appends a string between double quotes, with escapes for all but printable ASCII characters.
void append_quoted(std::string& to, std::string_view text);

}  // namespace quarn
