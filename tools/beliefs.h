// What a propagated model says.
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace tool {

struct node_beliefs {
    std::string node;
    std::string label;                // empty: none
    std::vector<std::string> states;  // their names on the command line
    std::vector<std::string> labels;  // one for each state
    std::vector<double> beliefs;      // one for each state
    std::string observed;             // the state; empty: none
    std::vector<double> weights;      // of a likelihood, one for each state; empty: none
};

struct model_beliefs {
    std::string model;
    double log_p;  // of the evidence
    double p;
    std::vector<node_beliefs> nodes;  // in creation order
};

model_beliefs collect_beliefs(const model& propagated);

// A table to read.
std::string beliefs_as_text(const model_beliefs& shown);
// {"model": FILE, "evidence": {NODE: STATE or [WEIGHT, ...], ...}, "log_p": ..., "p": ...,
//  "beliefs": {NODE: {"states": [...], "beliefs": [...]}, ...}}, nodes in creation order, numbers in full precision.
// States are named as on the command line. All is ASCII; p is null when it is infinite.
std::string beliefs_as_json(const model_beliefs& shown);

}  // namespace tool
