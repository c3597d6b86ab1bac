#include "random_generator.h"

#include <algorithm>
#include <cmath>

namespace quarn {
namespace {

constexpr double unit =
    0x1p-52;  // all numbers are even multiples of it, but for one while the generator starts

// Of numbers below 1. Without a branch, which would be mispredicted half of the time.
double add_modulo_1(double a, double b) noexcept {
    const double sum = a + b, less = sum - 1;
    return less < 0 ? sum : less;
}

}  // namespace

// The sequence begins at the power of a polynomial that the seed, with 70 bits, is the exponent of.
void random_generator::start() noexcept {
    constexpr int rounds = 70;
    std::array<double, 2 * long_lag - 1> powers{};
    double bootstrap = 2 * unit * (seed_ + 2.0);
    for (std::size_t j = 0; j < long_lag; ++j) {
        powers[j] = bootstrap;
        bootstrap += bootstrap;
        if (bootstrap >= 1) bootstrap -= 1 - 2 * unit;
    }
    powers[1] += unit;

    uint32_t bits = seed_;
    for (int round = rounds - 1; round > 0;) {
        for (std::size_t j = long_lag - 1; j > 0; --j) {  // square
            powers[2 * j] = powers[j];
            powers[2 * j - 1] = 0;
        }
        for (std::size_t j = 2 * long_lag - 2; j >= long_lag; --j) {
            double& lagged = powers[j - (long_lag - short_lag)];
            lagged = add_modulo_1(lagged, powers[j]);
            powers[j - long_lag] = add_modulo_1(powers[j - long_lag], powers[j]);
        }
        if (bits % 2 == 1) {  // multiply by the variable
            for (std::size_t j = long_lag; j > 0; --j) powers[j] = powers[j - 1];
            powers[0] = powers[long_lag];
            powers[short_lag] = add_modulo_1(powers[short_lag], powers[long_lag]);
        }
        if (bits > 0)
            bits /= 2;
        else
            --round;
    }
    std::rotate_copy(powers.begin(), powers.begin() + short_lag, powers.begin() + long_lag, numbers_.begin());

    constexpr std::size_t warm_up = 10 * (2 * long_lag - 1);
    skip(warm_up);
    advance(position_);
    std::rotate(numbers_.begin(), numbers_.begin() + static_cast<std::ptrdiff_t>(position_), numbers_.end());
    position_ = 0;
}

void random_generator::advance(std::size_t count) noexcept {
    const std::size_t before_wrap = std::min(count, short_lag);
    for (std::size_t j = 0; j < before_wrap; ++j)
        numbers_[j] = add_modulo_1(numbers_[j], numbers_[j + long_lag - short_lag]);
    for (std::size_t j = short_lag; j < count; ++j)
        numbers_[j] = add_modulo_1(numbers_[j], numbers_[j - short_lag]);
}

void random_generator::skip(std::size_t count) noexcept {
    for (position_ += count; position_ >= long_lag; position_ -= long_lag) advance();
}

void random_generator::start_run() noexcept {
    if (is_started_)
        skip(skipped);
    else
        start();
    is_started_ = true;
    left_in_run_ = run_length;
}

double random_generator::uniform() noexcept {
    if (left_in_run_ == 0) start_run();
    if (position_ == long_lag) skip(0);
    --left_in_run_;
    return numbers_[position_++];
}

// Ratio of uniform numbers [Kinderman & Monahan 1977].
double random_generator::normal(double mean, double variance) noexcept {
    constexpr double width = 1.7155277699214135;  // the square root of 8 / e
    if (variance == 0) return mean;
    for (;;) {
        double u = 0;
        while (u == 0) u = uniform();
        const double x = (uniform() - 0.5) * width / u;
        if (x * x <= -4 * std::log(u)) return mean + x * std::sqrt(variance);
    }
}

}  // namespace quarn
