// Text for people, whose terminals act on control characters.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// The text with each byte of a control character, and each that is not UTF-8, as \xNN.
std::string visible(std::string_view text);

// The same, as a line of its own.
std::string visible_line(std::string_view text);

// Writes a line to standard error. What it is about, up to a colon, stands out.
void report(std::string_view line);

}  // namespace tool
