// The states of discrete nodes: their number, order, labels and values.
#pragma once

#include <cstdint>

#include "node.h"

namespace quarn {

void set_subtype(node& changed, q_subtype_t subtype);
void set_state_count(node& changed, std::size_t count);

const char* state_label(const node& labelled, std::size_t state) noexcept;
void set_state_label(node& labelled, std::size_t state, const char* label);
void set_state_value(node& changed, std::size_t index, double value);
double state_value(const node& asked, std::size_t index);

// The single state with a non-empty label; -1 when there is none.
int64_t state_from_label(const node& asked, const char* label) noexcept;
// Whether the values of a numbered or interval node are set and increase as they must.
bool state_values_are_valid(const node& asked) noexcept;
// The state that a number selects in a numbered or interval node with valid values; -1 when there is none.
int64_t state_from_value(const node& asked, double value) noexcept;

void reorder_states(node& changed, const char* const* labels);

}  // namespace quarn
