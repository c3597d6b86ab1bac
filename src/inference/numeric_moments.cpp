#include "numeric_moments.h"

#include <algorithm>

#include "state_numbers.h"

namespace quarn {
namespace {

constexpr double rounding = 1e-12;  // of a sum of probabilities

double spread(const interval& of) noexcept {
    const double width = of.upper - of.lower;
    return of.is_finite() ? width * width / 12 : 0;
}

mean_and_variance interval_moments(std::span<const double> bounds, std::span<const double> beliefs) noexcept {
    const auto state = [&](std::size_t s) { return interval{bounds[s], bounds[s + 1]}; };
    mean_and_variance result{0, 0};
    for (std::size_t s = 0; s < beliefs.size(); ++s) result.mean += beliefs[s] * state(s).middle();
    for (std::size_t s = 0; s < beliefs.size(); ++s) {
        const double distance = state(s).middle() - result.mean;
        result.variance += beliefs[s] * (distance * distance + spread(state(s)));
    }
    return result;
}

mean_and_variance value_moments(std::span<const double> values, std::span<const double> beliefs) noexcept {
    if (const auto certain = certain_state(beliefs)) return {values[*certain], 0};
    mean_and_variance result{0, 0};
    for (std::size_t s = 0; s < beliefs.size(); ++s) result.mean += beliefs[s] * values[s];
    for (std::size_t s = 0; s < beliefs.size(); ++s)
        result.variance += beliefs[s] * (values[s] - result.mean) * (values[s] - result.mean);
    return result;
}

double level_in_interval(const interval& of, double level) noexcept {
    if (of.is_finite()) return of.lower + level * (of.upper - of.lower);
    return of.middle();
}

}  // namespace

mean_and_variance numeric_moments(const node& with_values, std::span<const double> beliefs) {
    require_state_numbers(with_values);
    return with_values.subtype == q_subtype_interval ? interval_moments(with_values.state_values, beliefs)
                                                     : value_moments(with_values.state_values, beliefs);
}

double numeric_quantile(const node& with_values, std::span<const double> beliefs, double level) {
    require_state_numbers(with_values);
    double below = 0;
    std::size_t found = 0;
    double within = 1;  // how much of the belief in that state lies below the level
    for (std::size_t state = 0; state < beliefs.size(); ++state) {
        if (!(beliefs[state] > 0)) continue;
        found = state;  // the last possible state, where rounding leaves the sum below the level
        within = std::clamp((level - below) / beliefs[state], 0.0, 1.0);
        below += beliefs[state];
        if (below >= level - rounding) break;
    }
    const std::vector<double>& values = with_values.state_values;
    return with_values.subtype == q_subtype_interval
               ? level_in_interval({values[found], values[found + 1]}, within)
               : values[found];
}

std::optional<std::size_t> certain_state(std::span<const double> beliefs) noexcept {
    const auto is_positive = [](double belief) { return belief > 0; };
    const auto first = std::ranges::find_if(beliefs, is_positive);
    if (first == beliefs.end() || std::any_of(first + 1, beliefs.end(), is_positive)) return {};
    return static_cast<std::size_t>(first - beliefs.begin());
}

}  // namespace quarn
