// The one channel through which parsers report errors and warnings.
#pragma once

#include <cstdarg>
#include <cstddef>

#include "errors.h"
#include "quarn.h"

namespace quarn {

// Thrown after what went wrong was reported; unwinds to the entry point of the parser.
class reported_failure : public failure {
public:
    using failure::failure;
};

// A message that begins with "warning: " is a warning, any other an error.
class parse_reports {
public:
    parse_reports(q_parse_error_handler_t handler, void* data) noexcept : handler_(handler), data_(data) {}

    // Hands the caller's handler the message, cut to 511 characters.
    [[gnu::format(printf, 3, 0)]] void report(std::size_t position, const char* format,
                                              std::va_list arguments);

    std::size_t error_count() const noexcept { return error_count_; }
    // Of errors and warnings.
    std::size_t message_count() const noexcept { return message_count_; }

private:
    q_parse_error_handler_t handler_;
    void* data_;
    std::size_t error_count_ = 0;
    std::size_t message_count_ = 0;
};

}  // namespace quarn
