#include "enumeration.h"

#include <algorithm>
#include <numeric>

namespace oracle {
namespace {

double entry(const network& asked, const std::vector<std::size_t>& states, std::size_t node) {
    std::size_t row = 0;
    for (std::size_t parent : asked[node].parents) row = row * asked[parent].states + states[parent];
    return asked[node].table[row * asked[node].states + states[node]];
}

double weight(const network& asked, const std::vector<std::size_t>& states) {
    double product = 1;
    for (std::size_t node = 0; node < asked.size(); ++node) {
        product *= entry(asked, states, node);
        if (!asked[node].weights.empty()) product *= asked[node].weights[states[node]];
    }
    return product;
}

bool advance(const network& asked, std::vector<std::size_t>& states) {
    for (std::size_t node = 0; node < asked.size(); ++node) {
        if (++states[node] < asked[node].states) return true;
        states[node] = 0;
    }
    return false;
}

}  // namespace

answers enumerate(const network& asked) {
    answers result;
    for (const variable& v : asked) result.beliefs.emplace_back(v.states, 0.0);
    std::vector<std::size_t> states(asked.size(), 0);
    do {
        const double w = weight(asked, states);
        result.probability += w;
        for (std::size_t node = 0; node < asked.size(); ++node) result.beliefs[node][states[node]] += w;
    } while (advance(asked, states));
    for (auto& beliefs : result.beliefs)
        for (double& b : beliefs) b /= result.probability;
    return result;
}

std::vector<double> random_row(std::mt19937& random, std::size_t states, bool with_zeros) {
    std::uniform_real_distribution<double> uniform(0.01, 1);
    std::bernoulli_distribution is_zero(with_zeros ? 0.4 : 0);
    std::vector<double> row(states);
    for (double& p : row) p = is_zero(random) ? 0 : uniform(random);
    row[random() % states] += 0.1;
    const double sum = std::accumulate(row.begin(), row.end(), 0.0);
    for (double& p : row) p /= sum;
    return row;
}

void randomize_table(std::mt19937& random, network& changed, std::size_t node, bool with_zeros) {
    variable& v = changed[node];
    std::size_t rows = 1;
    for (std::size_t parent : v.parents) rows *= changed[parent].states;
    v.table.clear();
    for (std::size_t row = 0; row < rows; ++row) {
        const std::vector<double> numbers = random_row(random, v.states, with_zeros);
        v.table.insert(v.table.end(), numbers.begin(), numbers.end());
    }
}

network random_network(std::mt19937& random, const random_shape& shape) {
    network result(shape.nodes);
    for (std::size_t node = 0; node < shape.nodes; ++node) {
        variable& v = result[node];
        v.states = 1 + random() % shape.most_states;
        std::vector<std::size_t> earlier(node);
        std::iota(earlier.begin(), earlier.end(), std::size_t{0});
        std::shuffle(earlier.begin(), earlier.end(), random);
        earlier.resize(std::min(node, random() % (shape.most_parents + 1)));
        v.parents = earlier;
        randomize_table(random, result, node, shape.with_zeros);
    }
    return result;
}

}  // namespace oracle
