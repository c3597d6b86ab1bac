#include "source_file.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr size_t messages_shown = 20;  // of each sort

// Why the system does not let a file be read; empty when it now does.
std::string why_unreadable(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0) return std::generic_category().message(errno);
    std::error_code unknown;
    const bool is_directory = std::filesystem::is_directory(path, unknown);
    return is_directory ? std::generic_category().message(EISDIR) : "";
}

void tell_how_many_more(const std::string& file, size_t count, const char* sort) {
    if (count > messages_shown)
        report(file + ": " + std::to_string(count - messages_shown) + " more " + sort);
}

}  // namespace

// The library takes what looks like NET text for text, which nothing that begins with a slash or a point does.
std::string source_file::path() const {
    if (name_ == "-") return "/dev/stdin";
    return name_.starts_with('/') ? name_ : "./" + name_;
}

void source_file::hear(size_t line, const char* message, void* data) noexcept {
    auto& file = *static_cast<source_file*>(data);
    const bool is_warning = std::string_view(message).starts_with("warning: ");
    if (++(is_warning ? file.warnings_ : file.errors_) > messages_shown) return;
    try {
        report(file.name_ + ":" + std::to_string(line) + ": " + message);
    } catch (const std::bad_alloc&) {
        // The message is lost; that it came is not.
    }
}

void source_file::finish(q_error_t code) const {
    tell_how_many_more(name_, warnings_, "warnings");
    tell_how_many_more(name_, errors_, "errors");
    if (code == q_error_none) return;
    if (errors_ > 0 || code == q_error_parse) throw command_failure("");
    fail_to_read(code);
}

void source_file::fail_to_read(q_error_t code) const {
    if (code == q_error_io)
        if (const std::string reason = why_unreadable(path()); !reason.empty())
            throw command_failure(name_ + ": cannot be read: " + reason);
    fail_with_library_error(name_, code);
}

}  // namespace tool
