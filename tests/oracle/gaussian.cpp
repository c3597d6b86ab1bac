#include "gaussian.h"

#include <cmath>
#include <map>

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

mixture marginal(const mixture& of, const list& discrete, const list& continuous) {
    std::map<list, mixture> groups;
    for (const gaussian& part : of) {
        list states;
        for (const std::size_t v : discrete) states.push_back(part.states[v]);
        groups[states].push_back(part);
    }
    mixture result;
    const std::size_t n = continuous.size();
    for (const auto& [states, parts] : groups) {
        gaussian mixed{states, 0, std::vector<double>(n), {n, std::vector<double>(n)}};
        double sum = 0;
        for (const gaussian& part : parts) sum += std::exp(part.log_weight);
        for (const gaussian& part : parts)
            for (std::size_t i = 0; i < n; ++i) {
                const double w = std::exp(part.log_weight) / sum, mean = part.mean[continuous[i]];
                mixed.mean[i] += w * mean;
                for (std::size_t j = 0; j < n; ++j)
                    mixed.covariance[i][j] +=
                        w * (part.covariance[continuous[i]][continuous[j]] + mean * part.mean[continuous[j]]);
            }
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) mixed.covariance[i][j] -= mixed.mean[i] * mixed.mean[j];
        mixed.log_weight = std::log(sum);
        result.push_back(mixed);
    }
    return result;
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

mixed_table random_table(std::mt19937& random, const list& state_counts, std::size_t continuous_variable,
                         std::size_t noiseless_quarters) {
    std::uniform_real_distribution number(-2.0, 2.0);
    mixed_table made{{}, {continuous_variable}, {1}, {}};
    for (std::size_t v = 0; v < state_counts.size(); ++v)
        if (random() % 2 == 0)
            made.weights.resize(made.weights.size() * state_counts[made.discrete.emplace_back(v)], 1);
    for (std::size_t v = continuous_variable; v-- > 0;)
        if (random() % 2 == 0) made.continuous.push_back(v);
    for (std::size_t row = 0; row < made.weights.size(); ++row) {
        if (row > 0) made.weights[row] = double(random() % 4) / 4;
        std::vector<double>& equation = made.equations.emplace_back(made.continuous.size() + 1);
        for (double& entry : equation) entry = number(random);
        equation.front() = random() % 4 < noiseless_quarters ? 0 : 0.1 + std::abs(equation.front());
    }
    return made;
}

}  // namespace oracle
