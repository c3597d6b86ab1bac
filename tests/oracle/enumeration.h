// Answers by enumeration of the joint distribution: slow, obvious, and without a line of the library's code.
#pragma once

#include <cstddef>
#include <optional>
#include <random>
#include <vector>

#include "gaussian.h"

namespace oracle {

enum class role { chance, decision, utility, continuous };

struct variable {
    std::size_t states = 1;  // of a utility and a continuous variable: 1
    list parents;            // numbers of earlier discrete variables
    // One row for each configuration of the parents, the last parent varying fastest: probabilities, to be divided by
    // their sum, a decision's policy alike; one number for a utility, none for a continuous variable.
    std::vector<double> table;
    std::vector<double> weights;  // evidence: one weight for each state; empty: none
    role is = role::chance;
    // Of a continuous variable: numbers of earlier ones, for each row an equation as in mixed_table, and evidence.
    list regressors;
    std::vector<std::vector<double>> equations;
    std::optional<double> value;
    bool excluded = false;  // its evidence is part of the network
};
using network = std::vector<variable>;

// The joint distribution is the product of the tables but for the policies of decisions with evidence. By equilibrium,
// what is left out is summed or maximised over. Answers about what is impossible are NaN.
struct answers {
    double log_probability =
        0;  // of the evidence, or of the most probable configuration; -infinity: impossible
    std::vector<std::vector<double>> beliefs;    // for each variable; their sum, or the largest, is 1
    std::vector<std::vector<double>> retracted;  // the same, given the evidence on all other variables
    struct moments {                             // of a utility or a continuous variable
        double mean = 0, variance = 0;
        double minimum = INFINITY,
               maximum = -INFINITY;  // of what is possible; of a component: one deviation around
    };
    std::vector<moments> moments_of;
    std::vector<std::vector<std::vector<double>>>
        utilities;  // [variable][state][utility]: mean given that state
    // How the values of continuous variables fare: some configuration leaves no variance to one of them (and is
    // possible nevertheless).
    bool noiseless = false, determined = false;
};

answers enumerate(const network& asked, bool maximise = false);

// The posterior distribution: every configuration of the variables, the last one varying fastest, with the logarithm of its
// probability and the distribution of the continuous variables in it.
mixture posterior(const network& asked);

// With zeros, a row may have just one number that is none.
void randomize_table(std::mt19937& random, network& changed, std::size_t node, bool with_zeros);

struct random_shape {
    std::size_t nodes;
    std::size_t most_states;
    std::size_t most_parents;
    bool with_zeros;                           // in tables; relations without noise
    std::vector<role> roles = {role::chance};  // of all but the first, a chance variable
};
network random_network(std::mt19937& random, const random_shape& shape);

}  // namespace oracle
