// A sequence of pseudo-random numbers: the lagged Fibonacci generator with lags 100 and 37 and additions modulo 1, in its
// version of 2002 [Knuth 1997, section 3.6].
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quarn {

class random_generator {
public:
    // The low 30 bits of the seed count. The sequence is not started before it is used, since that takes a while.
    explicit random_generator(uint32_t seed = 310952) noexcept : seed_(seed & 0x3fffffff) {}

    // From 0 to below 1. Of every 1009 numbers of the sequence 100 are used.
    double uniform() noexcept;
    // The variance must be at least 0. Where it is 0 nothing is drawn.
    double normal(double mean, double variance) noexcept;

private:
    static constexpr std::size_t long_lag = 100;
    static constexpr std::size_t short_lag = 37;
    static constexpr std::size_t run_length = 100;
    static constexpr std::size_t skipped = 909;

    void start() noexcept;
    void start_run() noexcept;
    void skip(std::size_t count) noexcept;
    // Replaces the first numbers, as many as asked for, by those that follow the last one.
    void advance(std::size_t count = long_lag) noexcept;

    std::array<double, long_lag>
        numbers_{};  // that follow each other, the one at position_ first or next to be used
    std::size_t position_ = 0;
    std::size_t left_in_run_ = 0;
    uint32_t seed_;
    bool is_started_ = false;
};

}  // namespace quarn
