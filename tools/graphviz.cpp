#include "graphviz.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tool_failure.h"

// NOLINTNEXTLINE(readability-redundant-declaration): POSIX asks for it
extern char** environ;

namespace tool {
namespace {

using file_owner = std::unique_ptr<FILE, decltype(&std::fclose)>;

[[noreturn]] void fail(int problem) {
    throw command_failure(std::string("dot: cannot be run: ") + std::strerror(problem));
}

// A file without a name: dot reads it whenever it likes, so nobody waits for the other.
file_owner as_file(const std::string& text) {
    file_owner file(std::tmpfile(), std::fclose);
    if (file == nullptr || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
        std::fflush(file.get()) != 0 || std::fseek(file.get(), 0, SEEK_SET) != 0)
        fail(errno);
    return file;
}

pid_t spawn(int input, int output) {
    std::string program = "dot", format = "-Tjson0";
    const std::array<char*, 3> words = {program.data(), format.data(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t process = 0;
    const int problem = ::posix_spawnp(&process, program.c_str(), &actions, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (problem == ENOENT)
        throw command_failure(
            "dot, which lays out pictures, is not installed: on Debian it is in the package "
            "graphviz; quarn draw --dot needs none");
    if (problem != 0) fail(problem);
    return process;
}

std::string read_all(int descriptor) {
    std::string text;
    std::array<char, 1 << 16> piece{};
    for (;;) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count == 0) return text;
        if (count > 0) text.append(piece.data(), static_cast<size_t>(count));
        if (count < 0 && errno != EINTR) fail(errno);
    }
}

}  // namespace

std::string run_dot(const std::string& graph) {
    const file_owner input = as_file(graph);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail(errno);
    const file_owner reading(::fdopen(ends[0], "r"), std::fclose);
    file_owner writing(::fdopen(ends[1], "w"), std::fclose);
    const pid_t process = spawn(::fileno(input.get()), ends[1]);
    writing.reset();
    std::string text = read_all(ends[0]);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {}
    if (status != 0) throw command_failure("dot, which lays out pictures, failed");
    return text;
}

}  // namespace tool
