// What a propagated model says.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "model.h"

namespace tool {

// At most one of the three is given.
struct node_evidence {
    std::string node;
    std::string state;            // empty: none
    std::vector<double> weights;  // of a likelihood, one for each state; empty: none
    std::optional<double> value;  // of a continuous node

    bool is_observed() const noexcept { return !state.empty() || value.has_value(); }
};

struct mean_and_variance {
    double mean;
    double variance;
};

struct node_beliefs {
    std::string node;
    std::string label;                  // empty: none
    q_category_t category;              // chance, decision, utility, or function
    std::vector<std::string> states{};  // their names on the command line; empty: no discrete node
    std::vector<std::string> labels{};  // one for each state
    node_evidence entered{};            // on this node
    std::vector<double> beliefs{};      // one for each state; empty: not asked for
    // Of a continuous node, or of the numbers that states stand for.
    std::optional<mean_and_variance> moments{};
    std::optional<double> value{};  // of a real-valued function
    // Of a utility node, or for each state, NaN where it cannot occur; empty: the model has no utilities.
    std::vector<double> expected_utilities{};
    std::optional<double> moved{};       // see keep_most_moved()
    std::optional<size_t> configured{};  // the state in the most probable configuration
    std::string failure{};               // why it could not be computed; empty: it could
};

struct probability {
    double log_p;
    double p;
};

struct model_beliefs {
    std::string model;
    std::vector<node_evidence> evidence;  // on all nodes, in creation order
    q_error_t failure;                    // of a discrete function, which leaves some nodes without results
    probability of_evidence;              // NaN then
    q_mode_t mode;
    std::optional<double> expected_utility;       // NaN when it could not be computed
    double largest_utility;                       // absolute value in any table
    std::optional<probability> of_configuration;  // together with the evidence
    std::vector<node_beliefs> nodes;
};

// What is entered on a node and how it and its states are called, without results.
node_beliefs describe(q_node_t node);
// Beliefs of nodes, what is expected of utility nodes, and values of functions.
model_beliefs compute_beliefs(model& asked, const std::vector<q_node_t>& shown, q_mode_t mode);
// Fails where a discrete function could not be computed.
void require_all_computed(const model_beliefs& result);
// Instead of beliefs a most probable configuration.
model_beliefs compute_configuration(model& asked, const std::vector<q_node_t>& shown);

// Keeps those nodes whose beliefs were moved most by the evidence, the one that moved most first: discrete ones by half
// the sum of the changes of their beliefs (the total variation distance), continuous ones by the change of the mean in
// standard deviations without evidence. In normal mode observed nodes are left out. Takes the evidence back.
void keep_most_moved(model& asked, model_beliefs& result, size_t count);

// The name of a node, its label and what else is known of it, as a line.
std::string heading(const node_beliefs& node);
// A state that goes by its index is shown with its label all the same.
std::string title(const node_beliefs& node, size_t state);
// Headings and results.
std::string nodes_as_text(const model_beliefs& shown);
// Its probability, with names padded to that width.
std::string evidence_as_text(const model_beliefs& shown, size_t width);
// Sums that cancel leave rounding errors, which are nothing beside the largest utility of the model.
std::string format_utility(double utility, const model_beliefs& shown);
// A table to read.
std::string beliefs_as_text(const model_beliefs& shown);
// The model, the evidence and its probability; the expected utility of each utility node.
nlohmann::ordered_json evidence_as_json(const model_beliefs& shown);
nlohmann::ordered_json utilities_as_json(const model_beliefs& shown);
// One object, described in docs/command.md. All is ASCII; numbers are in full precision, and null when not finite.
std::string beliefs_as_json(const model_beliefs& shown);

}  // namespace tool
