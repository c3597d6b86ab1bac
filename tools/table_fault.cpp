#include "table_fault.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <span>

#include "model.h"

namespace tool {
namespace {

constexpr double too_large = std::numeric_limits<double>::max();

struct fault {
    std::string subject;
    const char* problem = nullptr;  // null: there is none
};

const char* problem_of(double number) {
    if (std::isnan(number)) return "is not a number";
    return std::isinf(number) ? "is infinite" : nullptr;
}

const char* problem_of_magnitude(double number) { return number < 0 ? "is negative" : problem_of(number); }

const char* problem_of_probability(double probability) {
    const char* const problem = problem_of_magnitude(probability);
    return problem == nullptr && probability >= too_large ? "is too large" : problem;
}

fault distribution_fault(q_node_t node, std::span<const double> distribution) {
    for (size_t state = 0; state < distribution.size(); ++state)
        if (const char* problem = problem_of_probability(distribution[state]); problem != nullptr)
            return {std::string("the probability of ") + state_names(node)[state], problem};
    const double sum = std::accumulate(distribution.begin(), distribution.end(), 0.0);
    if (sum == 0) return {"the probabilities", "sum to 0"};
    if (sum >= too_large) return {"the probabilities", "sum to more than a number can hold"};
    return {};
}

fault density_fault(q_node_t node, size_t row) {
    if (const char* problem = problem_of_magnitude(q_node_get_cg_variance(node, row)); problem != nullptr)
        return {"the variance", problem};
    if (const char* problem = problem_of(q_node_get_cg_intercept(node, row)); problem != nullptr)
        return {"the mean", problem};
    for (const q_node_t* parent = q_node_get_parents(node); *parent != nullptr; ++parent) {
        if (q_node_get_kind(*parent) != q_kind_continuous) continue;
        const char* const problem = problem_of(q_node_get_cg_coefficient(node, *parent, row));
        if (problem != nullptr) return {std::string("the factor of ") + q_node_get_name(*parent), problem};
    }
    return {};
}

// In one row of the node's table, with these numbers.
fault find_fault(q_node_t node, size_t row, std::span<const double> numbers) {
    if (q_node_get_kind(node) == q_kind_continuous) return density_fault(node, row);
    if (q_node_get_category(node) == q_category_utility) return {"the utility", problem_of(numbers.front())};
    return distribution_fault(node, numbers);
}

}  // namespace

std::string condition_of(std::span<const q_node_t> parents, size_t row, size_t rows) {
    std::string text;
    for (const q_node_t parent : parents) {
        rows /= q_node_get_number_of_states(parent);
        text += text.empty() ? " given " : ", ";
        text.append(q_node_get_name(parent)).append("=").append(state_names(parent)[row / rows]);
        row %= rows;
    }
    return text;
}

std::vector<std::string> table_faults(q_node_t node, size_t limit) {
    std::vector<std::string> faults;
    if (q_node_get_category(node) == q_category_function) return faults;
    const q_table_t table = q_node_get_table(node);
    const double* entries = q_table_get_data(table);
    if (entries == nullptr) return faults;
    const size_t states = q_node_get_kind(node) == q_kind_discrete ? q_node_get_number_of_states(node) : 1;
    const size_t rows = q_table_get_size(table) / states;
    for (size_t row = 0; row < rows && faults.size() < limit; ++row) {
        const fault found = find_fault(node, row, {entries + row * states, states});
        if (found.problem == nullptr) continue;
        faults.push_back(std::string("node ") + q_node_get_name(node) + ": " + found.subject +
                         condition_of(conditioning_nodes(node), row, rows) + " " + found.problem);
    }
    return faults;
}

std::string find_table_fault(const std::vector<q_node_t>& nodes) {
    for (const q_node_t node : nodes)
        if (const std::vector<std::string> found = table_faults(node, 1); !found.empty())
            return found.front();
    return "";
}

}  // namespace tool
