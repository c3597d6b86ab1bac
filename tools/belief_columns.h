// What a propagated model says, as fields of a line.
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace tool {

// For each node: the belief of each of its states; mean and variance; the utility expected; or the value of a function.
class belief_columns {
public:
    belief_columns(const model& asked, const std::vector<q_node_t>& nodes);

    // Both append each field with a comma behind it.
    void append_names(std::string& line) const;
    void append_values(std::string& line) const;
    // As many empty fields.
    void append_nothing(std::string& line) const;

private:
    using number_reader = q_number_t (*)(q_node_t node);
    struct column {
        q_node_t node;
        size_t states;         // of a discrete node, a field for each
        number_reader number;  // otherwise
        const char* suffix;    // to the name, then
    };

    void append_beliefs(const column& shown, std::string& line) const;
    void append_number(const column& shown, std::string& line) const;

    const model& asked_;
    std::vector<column> columns_;
    size_t field_count_ = 0;
};

}  // namespace tool
