// Single policy updating: better policies for the decisions, one at a time.
#pragma once

#include <span>

#include "junction_forest.h"

namespace quarn {

// Fails with q_error_usage unless the domain is propagated in normal mode, nothing having changed since; with
// q_error_not_compiled; or as a propagation does, with the same consequences, policies that were updated staying so.
void update_policies(domain& compiled);

// Takes weight away from the states of a decision that are not optimal, given the expected utility of each in one
// configuration of its parents; utilities that differ by less than `noise` are equal. Returns whether it did.
bool improve_row(std::span<double> policy, std::span<const double> utilities, double noise) noexcept;

}  // namespace quarn
