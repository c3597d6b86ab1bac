#include "emphasis.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace tool {
namespace {

bool shows_emphasis(std::FILE* stream) {
    const char* const is_refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (is_refused == nullptr || *is_refused == '\0') && terminal != nullptr &&
           std::string_view(terminal) != "dumb" && ::isatty(::fileno(stream)) == 1;
}

std::string emphasized(const std::string& text, const char* code, std::FILE* stream) {
    return shows_emphasis(stream) ? std::string("\033[") + code + "m" + text + "\033[m" : text;
}

}  // namespace

std::string in_bold(const std::string& text, std::FILE* stream) { return emphasized(text, "1", stream); }

std::string in_red(const std::string& text, std::FILE* stream) { return emphasized(text, "1;31", stream); }

}  // namespace tool
