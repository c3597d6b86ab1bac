#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace tool {
namespace {

constexpr const char* clear_line = "\r\033[K";

}  // namespace

progress::progress(size_t total, const char* what, bool is_wanted)
    : total_(total), what_(what), is_wanted_(is_wanted && ::isatty(STDERR_FILENO) == 1) {}

progress::~progress() {
    if (is_shown_) std::fputs(clear_line, stderr);
}

void progress::show(size_t done) noexcept {
    const clock::time_point now = clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(250);
    is_shown_ = true;
    if (total_ == 0) {
        std::fprintf(stderr, "%s%zu %s", clear_line, done, what_);
        return;
    }
    constexpr int width = 30;
    const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    const double left = std::chrono::duration<double>(now - start_).count() * (1 / part - 1);
    const int filled = static_cast<int>(part * width);
    std::fprintf(stderr, "%s[%.*s%*s] %3d%% of %zu %s, %.0f s left", clear_line, filled,
                 "==============================", width - filled, "", static_cast<int>(part * 100), total_,
                 what_, left);
}

}  // namespace tool
