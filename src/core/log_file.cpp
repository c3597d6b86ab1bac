#include "log_file.h"

#include <cstdarg>

#include "errors.h"

namespace quarn {

std::FILE* open_file(const char* path, const char* mode) {
    std::FILE* stream = std::fopen(path, mode);
    require(stream != nullptr, q_error_io);
    return stream;
}

void log_file::open(const char* path, bool append) {
    std::FILE* opened = open_file(path, append ? "a" : "w");
    if (!close()) {
        std::fclose(opened);
        throw failure(q_error_io);
    }
    stream_ = opened;
    unusable_ = false;
}

bool log_file::close() noexcept {
    if (stream_ == nullptr) return true;
    unusable_ = std::fclose(stream_) != 0;
    stream_ = nullptr;
    return !unusable_;
}

void log_file::print(const char* format, ...) {
    require(!unusable_, q_error_io);
    if (stream_ == nullptr) return;
    std::va_list arguments;
    va_start(arguments, format);
    const int written = std::vfprintf(stream_, format, arguments);
    va_end(arguments);
    require(written >= 0, q_error_io);
}

void log_file::flush() {
    require(!unusable_, q_error_io);
    require(stream_ == nullptr || std::fflush(stream_) == 0, q_error_io);
}

}  // namespace quarn
