// Files that the library reads, and what it says of them.
#pragma once

#include <cstddef>
#include <string>

#include "quarn.h"

namespace tool {

class source_file {
public:
    // `-` stands for standard input. The name must outlive this.
    explicit source_file(const std::string& name) noexcept : name_(name) {}

    // By which the library finds the file.
    std::string path() const;
    // A handler that prints messages on standard error as "file:line: message", of each sort the first 20; `data` is the
    // file.
    static void hear(size_t line, const char* message, void* data) noexcept;
    // To be called when the file has been read. Tells how many more messages there were; fails where the library did.
    void finish(q_error_t code) const;
    // Fails with why the file cannot be read.
    [[noreturn]] void fail_to_read(q_error_t code) const;

private:
    const std::string& name_;
    size_t warnings_ = 0;
    size_t errors_ = 0;
};

}  // namespace tool
