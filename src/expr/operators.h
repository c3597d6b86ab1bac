// The operators of expressions: their names, arguments and results.
#pragma once

#include <cstddef>
#include <string_view>

#include "quarn.h"

namespace quarn {

enum class value_type : unsigned char { number, boolean, label, distribution };

// Which arguments an operator takes, besides their number.
enum class signature : unsigned char {
    numbers,
    number_pairs,
    booleans,
    alike,               // two numbers, two booleans or two labels
    choice,              // a boolean, then two of one type that is no distribution: the type of the result
    condition,           // a boolean that holds no `probability`
    numeric_node,        // a reference to a node that has a number
    numeric_node_level,  // the same, and a number
    discrete_node,       // a reference to a discrete node
    causes,              // pairs of a boolean and a number
    truncated,           // a distribution between two bounds, either of which may be left out
    compound             // two, each a distribution or a number
};

enum class notation : unsigned char { function, infix, prefix };

struct operator_row {
    q_operator_t op;
    std::string_view name;
    std::size_t fewest;
    std::size_t most;
    signature takes;
    value_type gives;  // of a choice: meaningless
    notation written = notation::function;
};

constexpr std::size_t any_number = static_cast<std::size_t>(-1);

constexpr bool is_operator(q_operator_t op) noexcept {
    return op >= q_operator_normal && op < q_operator_number;
}
const operator_row& row_of(q_operator_t op) noexcept;
// The operator written as a function of that name; null: none.
const operator_row* find_function(std::string_view name) noexcept;

}  // namespace quarn
