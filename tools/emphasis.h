// What stands out on terminals. Elsewhere, on dumb ones, and where NO_COLOR is set, texts stay as they are.
#pragma once

#include <cstdio>
#include <string>

namespace tool {

// A text in bold letters, or in red ones, as that stream shows them.
std::string in_bold(const std::string& text, std::FILE* stream);
std::string in_red(const std::string& text, std::FILE* stream);

}  // namespace tool
