// The value of an expression by recursion over what the public accessors tell.
#pragma once

#include <functional>
#include <string>
#include <variant>

#include <quarn.h>

namespace oracle {

struct outcome {
    q_error_t code = q_error_none;
    std::variant<double, bool, std::string> value = 0.0;  // meaningless after an error

    bool operator==(const outcome& other) const {
        return code == other.code && (code != q_error_none || value == other.value);
    }
};

// What nodes stand for, and what is asked about them.
struct node_meanings {
    std::function<outcome(q_node_t)> value, state, variance;
    std::function<outcome(q_node_t, double level)> quantile;
    std::function<outcome(q_expression_t condition)> probability;
};

outcome expression_value(q_expression_t asked, const node_meanings& nodes);

}  // namespace oracle
