#include "evidence.h"

#include <algorithm>
#include <limits>

#include "errors.h"

namespace quarn {
namespace {

const junction_forest& required_forest(const domain& compiled) {
    const junction_forest* forest = forest_of(compiled);
    require(forest != nullptr, q_error_not_compiled);
    return *forest;
}

}  // namespace

void require_state(const node& observed, std::size_t state) {
    require(observed.is_discrete() && state < observed.state_count);
}

void enter_finding(node& observed, std::size_t state, double weight) {
    require_state(observed, state);
    require(weight >= 0 && weight < std::numeric_limits<double>::max());
    observed.evidence.enter(state, weight, observed.state_count);
}

void select_state(node& observed, std::size_t state) {
    require_state(observed, state);
    observed.evidence.index = static_cast<int64_t>(state);
}

void retract_findings(node& observed) {
    require(observed.has_kind());
    observed.evidence.index = findings::none;
}

void retract_all_findings(domain& observed) {
    for (node* next = observed.oldest; next != nullptr; next = next->newer)
        next->evidence.index = findings::none;
}

const compiled_node& propagated_node(const node& asked) {
    require(asked.is_discrete());
    const junction_forest& forest = required_forest(*asked.domain);
    const compiled_node& result = forest.of(asked);
    require(result.tree->equilibrium != q_equilibrium_none, q_error_no_equilibrium);
    return result;
}

bool has_evidence_to_propagate(const compiled_node& asked) noexcept {
    return findings_differ(asked.owner->evidence, asked.propagated, asked.owner->state_count);
}

bool has_evidence_to_propagate(const domain& asked) {
    return std::ranges::any_of(required_forest(asked).nodes,
                               [](const compiled_node& n) { return has_evidence_to_propagate(n); });
}

bool evidence_is_propagated(const domain& asked) {
    return std::ranges::any_of(required_forest(asked).trees,
                               [](const auto& tree) { return tree->evidence_is_propagated; });
}

}  // namespace quarn
