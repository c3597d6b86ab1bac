#include "enumeration.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

namespace oracle {
namespace {

std::size_t row_of(const network& asked, const list& states, std::size_t node) {
    std::size_t row = 0;
    for (std::size_t parent : asked[node].parents) row = row * asked[parent].states + states[parent];
    return row;
}

double entry(const network& asked, const list& states, std::size_t node) {
    const variable& v = asked[node];
    const bool decided = v.is == role::decision && !v.weights.empty();
    if (v.is == role::utility || v.is == role::continuous || decided) return 1;
    const auto row = v.table.begin() + std::ptrdiff_t(row_of(asked, states, node) * v.states);
    return row[std::ptrdiff_t(states[node])] / std::accumulate(row, row + std::ptrdiff_t(v.states), 0.0);
}

double weight(const variable& v, std::size_t state) { return v.weights.empty() ? 1 : v.weights[state]; }

bool advance(const network& asked, list& states) {
    for (std::size_t node = asked.size(); node-- > 0;) {
        if (++states[node] < asked[node].states) return true;
        states[node] = 0;
    }
    return false;
}

std::size_t row_count(const network& asked, std::size_t node) {
    std::size_t rows = 1;
    for (std::size_t parent : asked[node].parents) rows *= asked[parent].states;
    return rows;
}

// The continuous variables given their values: a part for each configuration, in the order of advance(), and the numbers
// of those in which some value left no variance.
std::pair<mixture, std::set<std::size_t>> conditioned(const network& asked) {
    list state_counts, numbers;
    std::size_t count = 0;
    for (const variable& v : asked) {
        state_counts.push_back(v.states);
        numbers.push_back(count);
        count += v.is == role::continuous;
    }
    std::vector<mixed_table> tables;
    for (std::size_t node = 0; node < asked.size(); ++node) {
        const variable& v = asked[node];
        if (v.is != role::continuous) continue;
        list family{numbers[node]};
        for (std::size_t regressor : v.regressors) family.push_back(numbers[regressor]);
        tables.push_back({v.parents, family, std::vector<double>(row_count(asked, node), 1.0), v.equations});
    }
    mixture parts = joint(state_counts, count, tables);
    std::set<std::size_t> noiseless;
    for (std::size_t node = 0; node < asked.size(); ++node)
        if (asked[node].value)
            for (std::size_t number : observe(parts, numbers[node], *asked[node].value))
                noiseless.insert(number);
    return {parts, noiseless};
}

}  // namespace

answers enumerate(const network& asked, bool maximise) {
    answers result;
    const std::size_t n = asked.size();
    for (const variable& v : asked) {
        result.beliefs.emplace_back(v.states, 0.0);
        result.utilities.emplace_back(v.states, std::vector<double>(n, 0.0));
    }
    result.retracted = result.beliefs;
    result.moments_of.resize(n);
    const bool mixed = std::ranges::count(asked, role::continuous, &variable::is) > 0;
    const auto [parts, noiseless] = mixed ? conditioned(asked) : std::pair<mixture, std::set<std::size_t>>();
    result.noiseless = !noiseless.empty();
    double highest = -INFINITY;  // of what is possible: all else may be likelier by any factor
    for (const gaussian& part : parts) {
        bool possible = true;
        for (std::size_t node = 0; node < n; ++node)
            possible =
                possible && entry(asked, part.states, node) * weight(asked[node], part.states[node]) > 0;
        if (possible) highest = std::max(highest, part.log_weight);
    }
    const double unit = highest > -INFINITY ? highest : 0;  // logarithm of that of the weights below

    double total = 0;
    const auto add = [&](double& to, double w) { to = maximise ? std::max(to, w) : to + w; };
    list states(n, 0);
    std::size_t number = 0;
    do {
        double possible = mixed ? std::exp(std::min(parts[number].log_weight - unit, 0.0)) : 1;
        for (std::size_t node = 0; node < n; ++node) possible *= entry(asked, states, node);
        double w = possible;
        for (std::size_t node = 0; node < n; ++node) w *= weight(asked[node], states[node]);
        add(total, w);
        result.determined |= w > 0 && noiseless.contains(number);
        std::size_t continuous = 0;
        for (std::size_t node = 0; node < n; ++node) {
            const variable& v = asked[node];
            add(result.beliefs[node][states[node]], w);
            double others = possible;
            for (std::size_t other = 0; other < n; ++other)
                if (other != node || v.excluded) others *= weight(asked[other], states[other]);
            add(result.retracted[node][states[node]], others);
            double x = 0, variance = 0;
            if (v.is == role::utility) x = v.table[row_of(asked, states, node)];
            if (v.is == role::continuous) {
                x = parts[number].mean[continuous];
                variance = std::max(parts[number].covariance[continuous][continuous], 0.0);
                ++continuous;
            }
            if (!(w > 0)) continue;
            answers::moments& moments = result.moments_of[node];
            moments.mean += w * x;
            moments.variance += w * (x * x + variance);
            moments.minimum = std::min(moments.minimum, x - std::sqrt(variance));
            moments.maximum = std::max(moments.maximum, x + std::sqrt(variance));
            for (std::size_t other = 0; v.is == role::utility && other < n; ++other)
                result.utilities[other][states[other]][node] += w * x;
        }
        ++number;
    } while (advance(asked, states));

    result.log_probability = std::log(total) + unit;
    for (std::size_t node = 0; node < n; ++node) {
        for (std::size_t state = 0; state < asked[node].states; ++state)
            if (const double belief = result.beliefs[node][state]; belief > 0)
                for (double& u : result.utilities[node][state]) u /= belief;
        for (std::vector<double>* beliefs : {&result.beliefs[node], &result.retracted[node]}) {
            double norm = 0;
            for (const double b : *beliefs) add(norm, b);
            for (double& b : *beliefs) b /= norm;
        }
        auto& [mean, variance, minimum, maximum] = result.moments_of[node];
        mean /= total;
        variance = variance / total - mean * mean;
        if (asked[node].value) mean = *asked[node].value, variance = 0;
    }
    return result;
}

mixture posterior(const network& asked) {
    mixture parts = conditioned(asked).first;
    const double log_probability = enumerate(asked).log_probability;
    for (gaussian& part : parts) {
        part.log_weight -= log_probability;
        for (std::size_t node = 0; node < asked.size(); ++node)
            part.log_weight +=
                std::log(entry(asked, part.states, node) * weight(asked[node], part.states[node]));
    }
    return parts;
}

void randomize_table(std::mt19937& random, network& changed, std::size_t node, bool with_zeros) {
    variable& v = changed[node];
    std::uniform_real_distribution<double> uniform(0.01, 1);
    std::bernoulli_distribution is_zero(with_zeros ? 0.4 : 0);
    const auto quarters = [&] { return double(random() % 17) / 4 - 2; };
    v.table.clear();
    v.equations.clear();
    for (std::size_t row = 0; row < row_count(changed, node); ++row) {
        if (v.is == role::utility) {
            v.table.push_back(quarters() * 50);
        } else if (v.is == role::continuous) {
            // Coarse, so that what should cancel does, and what should not leaves enough.
            std::vector<double>& equation = v.equations.emplace_back(v.regressors.size() + 2);
            for (double& number : equation) number = quarters();
            equation.front() = with_zeros && random() % 4 == 0 ? 0 : 0.25 + std::abs(equation.front());
        } else {
            for (std::size_t state = 0; state < v.states; ++state)
                v.table.push_back(is_zero(random) ? 0 : uniform(random));
            v.table[v.table.size() - 1 - random() % v.states] += 0.1;
        }
    }
}

network random_network(std::mt19937& random, const random_shape& shape) {
    network result(shape.nodes);
    for (std::size_t node = 0; node < shape.nodes; ++node) {
        variable& v = result[node];
        if (node > 0) v.is = shape.roles[random() % shape.roles.size()];
        if (v.is == role::chance || v.is == role::decision) v.states = 1 + random() % shape.most_states;
        for (const bool continuous : {false, true}) {
            list earlier;
            for (std::size_t other = 0; other < node; ++other)
                if (result[other].is != role::utility && (result[other].is == role::continuous) == continuous)
                    earlier.push_back(other);
            std::ranges::shuffle(earlier, random);
            earlier.resize(std::min(earlier.size(), random() % (shape.most_parents + 1)));
            if (!continuous || v.is == role::continuous) (continuous ? v.regressors : v.parents) = earlier;
        }
        randomize_table(random, result, node, shape.with_zeros);
    }
    return result;
}

}  // namespace oracle
