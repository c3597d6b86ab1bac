// Comma-separated values (RFC 4180) as the commands write them.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// Appends a field, in quotes where it needs them.
void append_field(std::string& line, std::string_view field);

// Appends a number with as many digits as it takes to read the same double back.
void append_number(std::string& line, double number);

}  // namespace tool
