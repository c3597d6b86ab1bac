#include "model_copies.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

#include "source_file.h"
#include "tool_failure.h"

namespace tool {
namespace {

void write_all(int descriptor, const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, count);
        if (written < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category());
        if (written <= 0) continue;
        bytes += written;
        count -= static_cast<size_t>(written);
    }
}

// Returns whether all could be read.
bool copy(int from, int to) {
    std::array<char, 64 * 1024> buffer;
    for (;;) {
        const ssize_t count = ::read(from, buffer.data(), buffer.size());
        if (count == 0 || (count < 0 && errno != EINTR)) return count == 0;
        if (count > 0) write_all(to, buffer.data(), static_cast<size_t>(count));
    }
}

}  // namespace

// Not a number of the standard streams, even where they are closed: what is written to these would go into the file.
model_copies::nameless_file::nameless_file() : descriptor_(-1) {
    const int created = ::memfd_create("model", MFD_CLOEXEC);
    if (created >= 0) {
        descriptor_ = ::fcntl(created, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        ::close(created);
    }
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category());
}

model_copies::nameless_file::~nameless_file() { ::close(descriptor_); }

model_copies::model_copies(const std::string& file) : file_(file) {
    if (file.empty()) throw usage_failure("the name of the MODEL file is missing");
    const source_file source(file);
    const int opened = ::open(source.path().c_str(), O_RDONLY | O_CLOEXEC);
    const bool is_copied = opened >= 0 && copy(opened, copy_.descriptor());
    if (opened >= 0) ::close(opened);
    if (!is_copied) source.fail_to_read(q_error_io);
}

model model_copies::first() const { return model(file_, read_domain(file_, path())); }

model model_copies::another() const {
    domain_owner domain(q_net_parse_domain(path().c_str(), nullptr, nullptr));
    if (domain == nullptr) fail_with_library_error(file_);
    return model(file_, std::move(domain));
}

// Opening it reads from the start, in each thread at its own pace.
std::string model_copies::path() const { return "/dev/fd/" + std::to_string(copy_.descriptor()); }

}  // namespace tool
