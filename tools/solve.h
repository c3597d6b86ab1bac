// What to decide: the policies of a model, and what is expected of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "beliefs.h"

namespace tool {

struct link_names {
    std::string parent;
    std::string child;
};

struct policy_row {
    std::vector<double> weights;  // of the decision's states
    bool is_possible = true;      // see mark_impossible_rows()
};

struct policy {
    node_beliefs decision;
    std::vector<node_beliefs> parents{};
    // One for each configuration of the parents, the last parent varying fastest; none when the decision's state is given.
    std::vector<policy_row> rows{};
};

struct solution {
    model_beliefs results;  // of the utility nodes
    double utility_before;  // expected of the policies begun with
    std::vector<policy> policies{};
    std::string start{};                                     // as it was asked for
    std::optional<std::vector<link_names>> removed_links{};  // none: not asked for
};

// Begin with these policies instead of those of the file: all states alike.
void set_uniform_policies(const model& asked);

// Removes the links into decisions that no policy needs to look at.
std::vector<link_names> remove_needless_links(const model& asked);

// The policies of all decisions, as they are.
std::vector<policy> read_policies(const model& asked);

// Improves the policies with which the model begins. Fails when there are no decisions, or no utilities.
solution solve(model& asked);

// Finds the configurations that cannot occur given the evidence, whatever is decided. Leaves no decisions in the model.
void mark_impossible_rows(model& asked, std::vector<policy>& policies);

// What a row says: the states to choose.
std::string choice(const node_beliefs& decision, const policy_row& row);
// The states of the parents in one of so many rows.
std::vector<std::string> states_in(const std::vector<node_beliefs>& parents, size_t row, size_t rows);
// Tables to read.
std::string solution_as_text(const solution& shown);
// One object, described in docs/command.md, in the style of beliefs_as_json().
std::string solution_as_json(const solution& shown);

}  // namespace tool
