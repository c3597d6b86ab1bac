#include "parse_reports.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace quarn {

void parse_reports::report(std::size_t position, const char* format, std::va_list arguments) {
    std::array<char, 512> message{};
    std::vsnprintf(message.data(), message.size(), format, arguments);
    ++message_count_;
    if (!std::string_view(message.data()).starts_with("warning: ")) ++error_count_;
    if (handler_ != nullptr) handler_(position, message.data(), data_);
}

}  // namespace quarn
