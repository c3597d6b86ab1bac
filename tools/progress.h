// How far a long command has come, for people who wait.
#pragma once

#include <chrono>
#include <cstddef>

namespace tool {

// One line on standard error, where that is a terminal, from the first second on; it is gone at the end.
class progress {
public:
    // The total is 0 where it is not known.
    progress(size_t total, const char* what, bool is_wanted);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    // Costs next to nothing: mostly not even a look at the clock.
    void reach(size_t done) noexcept {
        constexpr size_t step = 64;
        if (!is_wanted_ || done - looked_at_ < step) return;
        looked_at_ = done;
        show(done);
    }

private:
    using clock = std::chrono::steady_clock;

    void show(size_t done) noexcept;

    size_t total_;
    const char* what_;
    bool is_wanted_;
    bool is_shown_ = false;
    size_t looked_at_ = 0;
    clock::time_point start_ = clock::now();
    clock::time_point next_ = start_ + std::chrono::seconds(1);
};

}  // namespace tool
