#include "gaussian.h"

#include <cmath>

namespace oracle {

mixture joint(const list& state_counts, std::size_t continuous, const std::vector<mixed_table>& tables) {
    const std::vector<double> zeros(continuous);
    mixture parts{{{}, 0, zeros, {continuous, zeros}}};
    for (const std::size_t count : state_counts) {
        mixture longer;
        for (const gaussian& part : parts)
            for (std::size_t s = 0; s < count; ++s) longer.emplace_back(part).states.push_back(s);
        parts = longer;
    }
    for (auto& [states, log_weight, mean, covariance] : parts)
        for (const mixed_table& t : tables) {
            std::size_t row = 0;
            for (const std::size_t v : t.discrete) row = row * state_counts[v] + states[v];
            log_weight += std::log(t.weights[row]);
            if (t.continuous.empty()) continue;
            const std::size_t i = t.continuous.front();
            const std::vector<double>& equation = t.equations[row];
            mean[i] = equation.back();
            covariance[i][i] = equation.front();
            for (std::size_t k = 1; k < t.continuous.size(); ++k) {
                mean[i] += equation[k] * mean[t.continuous[k]];
                for (std::size_t j = 0; j < i; ++j)
                    covariance[j][i] = covariance[i][j] += equation[k] * covariance[t.continuous[k]][j];
            }
            for (std::size_t k = 1; k < t.continuous.size(); ++k)
                covariance[i][i] += equation[k] * covariance[i][t.continuous[k]];
        }
    return parts;
}

list observe(mixture& changed, std::size_t variable, double value) {
    list noiseless;
    for (std::size_t number = 0; number < changed.size(); ++number) {
        auto& [states, log_weight, mean, covariance] = changed[number];
        const std::vector<double> row = covariance[variable];
        const double variance = row[variable], difference = value - mean[variable];
        if (variance <= 1e-9) {
            noiseless.push_back(number);
            if (std::abs(difference) > 1e-10 * std::abs(value)) log_weight = -INFINITY;
            continue;
        }
        log_weight -= (std::log(2 * M_PI * variance) + difference * difference / variance) / 2;
        for (std::size_t i = 0; i < row.size(); ++i) {
            mean[i] += row[i] / variance * difference;
            for (std::size_t j = 0; j < row.size(); ++j) covariance[i][j] -= row[i] * row[j] / variance;
        }
    }
    return noiseless;
}

}  // namespace oracle
