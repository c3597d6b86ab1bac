#include "two_ended_choice.h"

#include <array>
#include <limits>

#include "errors.h"

namespace quarn {
namespace {

// Levels of two steps or more, in a table that can be numbered.
constexpr std::size_t most_levels = std::numeric_limits<std::size_t>::digits;

constexpr loop_level single_step{1, 0, 0};

struct drawn_share {
    drawn_share(double total, random_generator& generator) noexcept
        : threshold(total * 0.5 * generator.uniform()), is_forward(generator.uniform() < 0.5) {}

    double threshold;
    bool is_forward;
};

// Adds up weights until the sum exceeds the threshold.
class walk_of_weights {
public:
    walk_of_weights(const double* weights, double threshold) noexcept
        : weights_(weights), threshold_(threshold) {}

    // Whether it ends at that position.
    bool takes(std::size_t position) noexcept {
        sum_ += weights_[position];
        return sum_ > threshold_;
    }

private:
    const double* weights_;
    double threshold_;
    double sum_ = 0;
};

[[noreturn]] void fail_at_the_end() { throw failure(q_error_inconsistency_or_underflow); }

}  // namespace

std::size_t choose(std::span<const double> weights, double total, random_generator& generator) {
    const loop_level level{weights.size(), 1, 0};
    return choose_in_loops(weights.data(), {&level, 1}, total, generator);
}

std::size_t choose_listed(const double* weights, std::span<const uint32_t> positions, double total,
                          random_generator& generator) {
    const drawn_share share(total, generator);
    walk_of_weights walk(weights, share.threshold);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const std::size_t position = positions[share.is_forward ? i : positions.size() - 1 - i];
        if (walk.takes(position)) return position;
    }
    fail_at_the_end();
}

std::size_t choose_in_loops(const double* weights, std::span<const loop_level> levels, double total,
                            random_generator& generator) {
    const drawn_share share(total, generator);
    walk_of_weights walk(weights, share.threshold);
    const loop_level inner = levels.empty() ? single_step : levels.back();
    const std::span<const loop_level> outer = levels.first(levels.empty() ? 0 : levels.size() - 1);
    std::array<std::size_t, most_levels> steps_done;
    std::fill_n(steps_done.begin(), outer.size(), std::size_t{0});

    std::size_t start = 0;
    if (!share.is_forward)
        for (const loop_level& level : levels) start += (level.count - 1) * level.larger;
    for (;;) {
        std::size_t position = start;
        for (std::size_t step = 0; step < inner.count; ++step) {
            if (walk.takes(position)) return position;
            position = share.is_forward ? position + inner.larger : position - inner.larger;
        }
        std::size_t depth = outer.size();
        for (; depth > 0; --depth) {
            const loop_level& level = outer[depth - 1];
            const std::size_t rewind = (level.count - 1) * level.larger;
            const bool is_complete = ++steps_done[depth - 1] == level.count;
            // Unsigned positions wrap, which adds and takes away all the same.
            const std::size_t distance = is_complete ? 0 - rewind : level.larger;
            start = share.is_forward ? start + distance : start - distance;
            if (!is_complete) break;
            steps_done[depth - 1] = 0;
        }
        if (depth == 0) fail_at_the_end();
    }
}

}  // namespace quarn
