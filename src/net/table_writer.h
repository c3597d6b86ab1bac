// Tables as NET text: numbers in nested parentheses, with comments that tell which parents' states they belong to.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "node.h"
#include "table.h"

namespace quarn {

// Appends an attribute that is a table of numbers, over its discrete nodes in that order, whatever their order in the
// table. When the table `has_rows`, the numbers for the states of the last one are written in one line. Fails with
// q_error_invalid_probability_potential when a number is infinite or none.
void write_numbers(std::string& to, std::string_view attribute, const table& written,
                   std::span<node* const> order, bool has_rows);

// The same for the data of a continuous node: a distribution for each configuration of its discrete parents.
void write_normals(std::string& to, const table& written, std::span<node* const> discrete_parents,
                   std::span<node* const> continuous_parents);

}  // namespace quarn
