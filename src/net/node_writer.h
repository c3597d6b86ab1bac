// Nodes as NET text: what they are and their attributes.
#pragma once

#include <string>

#include "attributes.h"
#include "node.h"

namespace quarn {

// Fails with q_error_invalid_state_values when a state value is no number.
void write_node(std::string& to, node& written);

// A line for each attribute of the user's.
void write_attributes(std::string& to, const attribute_list& attributes);

}  // namespace quarn
