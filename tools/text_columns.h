// Numbers and columns of text for people.
#pragma once

#include <string>

namespace tool {

// Six significant digits, in any locale; N/A for what could not be computed.
std::string format_number(double value);

// Columns that UTF-8 text takes, roughly: its characters, not its bytes.
size_t width_of(const std::string& text);

// The text with blanks to that width.
std::string padded(std::string text, size_t width);

}  // namespace tool
