#include "numeric_moments.h"

#include <algorithm>

#include "state_numbers.h"

namespace quarn {
namespace {

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

}  // namespace

mean_and_variance numeric_moments(const node& with_values, std::span<const double> beliefs) {
    require_state_numbers(with_values);
    return with_values.subtype == q_subtype_interval ? interval_moments(with_values.state_values, beliefs)
                                                     : value_moments(with_values.state_values, beliefs);
}

std::optional<std::size_t> certain_state(std::span<const double> beliefs) noexcept {
    const auto is_positive = [](double belief) { return belief > 0; };
    const auto first = std::ranges::find_if(beliefs, is_positive);
    if (first == beliefs.end() || std::any_of(first + 1, beliefs.end(), is_positive)) return {};
    return static_cast<std::size_t>(first - beliefs.begin());
}

}  // namespace quarn
