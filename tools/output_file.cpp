#include "output_file.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tool_failure.h"

namespace tool {
namespace {

constexpr int interruptions[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGXFSZ};

// For the handler, which can neither be given the name nor read a string.
char unfinished[PATH_MAX];

extern "C" void remove_unfinished(int signal) {
    ::unlink(unfinished);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void remove_when_interrupted(const std::string& name) {
    name.copy(unfinished, PATH_MAX - 1);  // longer names cannot be opened
    for (const int signal : interruptions)
        if (std::signal(signal, remove_unfinished) == SIG_IGN) std::signal(signal, SIG_IGN);
}

void forget_unfinished() {
    for (const int signal : interruptions)
        if (std::signal(signal, SIG_DFL) == SIG_IGN) std::signal(signal, SIG_IGN);
}

// Where symbolic links lead to, even if nothing is there yet.
std::filesystem::path end_of_links(std::filesystem::path path) {
    std::error_code none;
    for (int most = 40; most > 0 && std::filesystem::is_symlink(path, none); --most)
        path = path.parent_path() / std::filesystem::read_symlink(path, none);
    return path;
}

}  // namespace

output_file::output_file(const std::string& name) : name_(name == "-" ? "standard output" : name) {
    std::error_code none;
    const std::filesystem::file_status old = std::filesystem::status(name, none);
    if (name == "-") {
        descriptor_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    } else if (std::filesystem::exists(old) && !std::filesystem::is_regular_file(old)) {
        descriptor_ = ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
    } else if (!std::filesystem::exists(old) || ::access(name.c_str(), W_OK) == 0) {
        target_ = end_of_links(name);
        open_beside();
        if (descriptor_ >= 0 && std::filesystem::exists(old))
            ::fchmod(descriptor_, static_cast<mode_t>(old.permissions()));
    }
    if (descriptor_ < 0) fail();
}

output_file::~output_file() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (written_.empty()) return;
    ::unlink(written_.c_str());
    forget_unfinished();
}

bool output_file::is_terminal() const noexcept { return ::isatty(descriptor_) == 1; }

void output_file::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor_, text.data(), text.size());
        if (count < 0 && errno != EINTR) fail();
        if (count > 0) text.remove_prefix(static_cast<size_t>(count));
    }
}

void output_file::finish() {
    const int status = ::close(descriptor_);
    descriptor_ = -1;
    if (status != 0) fail();
    if (written_.empty()) return;
    if (std::rename(written_.c_str(), target_.c_str()) != 0) fail();
    written_.clear();
    forget_unfinished();
}

void output_file::fail() const { throw command_failure(name_ + ": cannot be written"); }

void output_file::open_beside() {
    for (unsigned number = 0;; ++number) {
        std::string beside = target_.parent_path() / (".quarn-" + std::to_string(number) + ".tmp");
        descriptor_ = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno == EEXIST) continue;
        if (descriptor_ < 0) return;
        remove_when_interrupted(beside);
        written_ = std::move(beside);
        return;
    }
}

}  // namespace tool
