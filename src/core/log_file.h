// Files opened for the library, and the log stream of a domain.
#pragma once

#include <cstdio>
#include <memory>

namespace quarn {

// Opens a stream; fails with q_error_io.
std::FILE* open_file(const char* path, const char* mode);

// Nothing is written when no file is set. Every write that fails is q_error_io.
class log_file {
public:
    log_file() = default;
    ~log_file() { (void)close(); }
    log_file(const log_file&) = delete;
    log_file& operator=(const log_file&) = delete;

    // Opens the new file, then closes the old one. When closing fails the log stays as it is, but unusable.
    void open(const char* path, bool append);
    // Whether the file could be closed; true when there is none.
    bool close() noexcept;

    bool is_set() const noexcept { return stream_ != nullptr || unusable_; }
    [[gnu::format(printf, 2, 3)]] void print(const char* format, ...);
    void flush();

private:
    std::FILE* stream_ = nullptr;
    bool unusable_ = false;  // closing failed: the stream is gone, writes fail
};

}  // namespace quarn
