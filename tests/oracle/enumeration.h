// Answers by enumeration of the joint distribution: slow, obvious, and without a line of the library's code.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace oracle {

struct variable {
    std::size_t states = 1;
    std::vector<std::size_t> parents;  // numbers of earlier variables
    std::vector<double> table;    // one row of probabilities for each configuration of the parents, the last
                                  // parent varying fastest
    std::vector<double> weights;  // evidence: one weight for each state; empty: none
};

struct answers {
    double probability = 0;                    // of the evidence
    std::vector<std::vector<double>> beliefs;  // meaningless when that is 0
};

using network = std::vector<variable>;

answers enumerate(const network& asked);

// A random row: positive numbers that sum to 1, or, with zeros, possibly just one of them.
std::vector<double> random_row(std::mt19937& random, std::size_t states, bool with_zeros);
void randomize_table(std::mt19937& random, network& changed, std::size_t node, bool with_zeros);

struct random_shape {
    std::size_t nodes;
    std::size_t most_states;
    std::size_t most_parents;
    bool with_zeros;
};
network random_network(std::mt19937& random, const random_shape& shape);

}  // namespace oracle
