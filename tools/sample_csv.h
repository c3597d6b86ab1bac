// Sampled cases as comma-separated values (RFC 4180, but that lines end in line feeds).
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace tool {

class sample_csv {
public:
    // A column for each node.
    sample_csv(const model& sampled, const std::vector<q_node_t>& nodes);

    // The names of the nodes.
    std::string header() const;
    // Appends the configuration drawn last: states by what selects them on the command line, numbers so that they read
    // back exactly, nothing for a function that has no value.
    void append_case(std::string& text);
    // Tells, on standard error, of functions that had no value in some case, and why in the first.
    void report_missing_values() const;

private:
    struct column {
        q_node_t node;
        std::vector<std::string> states{};                 // of a discrete node
        q_number_t (*number_of)(q_node_t node) = nullptr;  // of another
        size_t missing = 0;
        q_error_t reason = q_error_none;
    };

    void append_number(column& shown, std::string& text);

    const model& sampled_;
    std::vector<column> columns_;
    const char* no_value_;
};

}  // namespace tool
