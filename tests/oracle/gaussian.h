// Networks of discrete and linear Gaussian variables by enumeration: for each configuration of the discrete ones the dense
// joint distribution of all continuous ones, from their structural equations.
#pragma once

#include <vector>

namespace oracle {

using list = std::vector<std::size_t>;

// A factor over discrete variables, or the regression of a continuous variable on others for each of their configurations.
struct mixed_table {
    list discrete;                               // the last one varying fastest
    list continuous;                             // empty, or a variable and earlier ones
    std::vector<double> weights;                 // for each configuration
    std::vector<std::vector<double>> equations;  // variance of the noise, a coefficient for each, intercept
};

struct gaussian {
    list states;  // the configuration of the discrete variables
    double log_weight = 0;
    std::vector<double> mean;
    std::vector<std::vector<double>> covariance;
};
using mixture = std::vector<gaussian>;  // all configurations, the last discrete variable varying fastest

mixture joint(const list& state_counts, std::size_t continuous, const std::vector<mixed_table>& tables);
// Conditions on a value and multiplies the weights by its density. A part without variance becomes impossible, unless it
// gives that very value; the numbers of these parts.
list observe(mixture& changed, std::size_t variable, double value);

}  // namespace oracle
