// Whole files as texts.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace quarn {

struct stream_closer {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
using owned_stream = std::unique_ptr<std::FILE, stream_closer>;

// Reads what a stream has left, then closes it. Fails with q_error_io.
std::string read_text(owned_stream stream);
// Reads a file. Fails likewise.
std::string read_file(const char* path);
// Makes a text the contents of a file. Fails with q_error_io; what has been written stays.
void write_file(const char* path, std::string_view contents);

}  // namespace quarn
