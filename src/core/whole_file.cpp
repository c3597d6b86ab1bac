#include "whole_file.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "errors.h"

namespace quarn {
namespace {

class output_file {
public:
    output_file(const char* path, int flags) noexcept
        : descriptor_(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0666)) {}
    ~output_file() {
        if (is_open()) ::close(descriptor_);
    }
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    bool is_open() const noexcept { return descriptor_ >= 0; }
    void set_permissions(mode_t mode) { require(::fchmod(descriptor_, mode) == 0, q_error_io); }
    void write(std::string_view contents) {
        while (!contents.empty()) {
            const ssize_t written = ::write(descriptor_, contents.data(), contents.size());
            require(written > 0 || (written < 0 && errno == EINTR), q_error_io);
            if (written > 0) contents.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void close() {
        const int status = ::close(descriptor_);
        descriptor_ = -1;
        require(status == 0, q_error_io);
    }

private:
    int descriptor_;
};

void write_in_place(const char* path, std::string_view contents) {
    output_file file(path, O_TRUNC);
    require(file.is_open(), q_error_io);
    file.write(contents);
    file.close();
}

// A name that is removed at the end, unless nothing has it any more.
struct temporary_name {
    ~temporary_name() {
        if (is_taken) ::unlink(name.c_str());
    }
    std::string name;
    bool is_taken = false;
};

// `old` tells of the file that is replaced; null where there is none.
void replace(std::string_view path, const struct stat* old, std::string_view contents) {
    const std::string begin = std::string(path.substr(0, path.rfind('/') + 1)) + ".quarn-";
    temporary_name temporary;
    for (unsigned number = 0; !temporary.is_taken; ++number) {
        temporary.name = begin + std::to_string(number) + ".tmp";
        output_file file(temporary.name.c_str(), O_EXCL);
        require(file.is_open() || errno == EEXIST, q_error_io);
        if (!file.is_open()) continue;
        temporary.is_taken = true;
        if (old != nullptr) file.set_permissions(old->st_mode & 07777);
        file.write(contents);
        file.close();
    }
    require(std::rename(temporary.name.c_str(), std::string(path).c_str()) == 0, q_error_io);
    temporary.is_taken = false;
}

// Tells of the file at the path; false where there is none.
bool find_file(int (*look)(const char*, struct stat*), const char* path, struct stat& found) {
    const bool is_there = look(path, &found) == 0;
    require(is_there || errno == ENOENT, q_error_io);
    return is_there;
}

}  // namespace

void write_whole_file(const char* path, std::string_view contents) {
    struct stat old;
    if (!find_file(::stat, path, old)) {
        const bool is_dangling_link = find_file(::lstat, path, old);
        return is_dangling_link ? write_in_place(path, contents) : replace(path, nullptr, contents);
    }
    if (!S_ISREG(old.st_mode)) return write_in_place(path, contents);
    std::array<char, PATH_MAX> resolved;
    require(::realpath(path, resolved.data()) != nullptr, q_error_io);
    require(::access(path, W_OK) == 0, q_error_io);
    replace(resolved.data(), &old, contents);
}

}  // namespace quarn
