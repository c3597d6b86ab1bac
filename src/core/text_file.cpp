#include "text_file.h"

#include "errors.h"
#include "log_file.h"

namespace quarn {

std::string read_text(owned_stream stream) {
    std::string contents;
    std::size_t size = 0;
    do {
        contents.resize(size + size / 2 + 65536);
        size += std::fread(contents.data() + size, 1, contents.size() - size, stream.get());
    } while (size == contents.size());
    contents.resize(size);
    require(std::ferror(stream.get()) == 0, q_error_io);
    require(std::fclose(stream.release()) == 0, q_error_io);
    return contents;
}

std::string read_file(const char* path) { return read_text(owned_stream(open_file(path, "rb"))); }

void write_file(const char* path, std::string_view contents) {
    owned_stream stream(open_file(path, "w"));
    require(std::fwrite(contents.data(), 1, contents.size(), stream.get()) == contents.size(), q_error_io);
    require(std::fclose(stream.release()) == 0, q_error_io);
}

}  // namespace quarn
