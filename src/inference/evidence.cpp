#include "evidence.h"

#include <limits>

#include "errors.h"

namespace quarn {
namespace {

// The tree that counts a change of evidence on the node, or null.
junction_tree* counting_tree(const node& changed) noexcept {
    junction_forest* const forest = forest_of(*changed.domain);
    if (forest == nullptr) return nullptr;
    junction_tree* const tree = forest->of(changed).tree;
    return tree->equilibrium != q_equilibrium_none ? tree : nullptr;
}

// The only way in which evidence on a node of a compiled domain changes.
template <class Change>
void change_evidence(node& changed, const Change& change) noexcept {
    junction_tree* const counting = counting_tree(changed);
    if (counting != nullptr && has_evidence_to_propagate(changed)) --counting->changed_evidence;
    change(changed);
    if (counting != nullptr && has_evidence_to_propagate(changed)) ++counting->changed_evidence;
}

template <class Visit>
void for_each_node_of(const junction_forest& forest, const junction_tree& tree, const Visit& visit) noexcept {
    for (const node* member : tree.nodes) visit(forest.of(*member));
    for (const compiled_node* excluded : tree.excluded) visit(*excluded);
}

void retract(node& observed) noexcept {
    for (node* next = &observed; next != nullptr && evidence_is_entered(*next); next = next->linked)
        change_evidence(*next, [](node& changed) {
            changed.evidence.index = findings::none;
            changed.value_is_entered = false;
        });
}

}  // namespace

void require_state(const node& observed, std::size_t state) {
    require(observed.is_discrete() && state < observed.state_count);
}

void enter_finding(node& observed, std::size_t state, double weight) {
    require_state(observed, state);
    require(observed.domain->owner == nullptr);
    require(weight >= 0 && weight < std::numeric_limits<double>::max());
    for (node* next = &observed; next != nullptr; next = next->linked)
        next->evidence.weights.reserve(next->state_count);

    change_evidence(observed, [&](node& n) { n.evidence.enter(state, weight, n.state_count); });
    for (node* next = observed.linked; next != nullptr; next = next->linked)
        change_evidence(*next, [&](node& n) { n.evidence.enter(observed.evidence.weights); });
}

void select_state(node& observed, std::size_t state) {
    require_state(observed, state);
    require(observed.domain->owner == nullptr);
    const auto index = static_cast<int64_t>(state);
    for (node* next = &observed; next != nullptr && next->evidence.index != index; next = next->linked)
        change_evidence(*next, [&](node& n) { n.evidence.index = index; });
}

void enter_value(node& observed, double value) {
    require(observed.is_continuous());
    for (node* next = &observed; next != nullptr; next = next->linked)
        change_evidence(*next, [&](node& n) {
            n.value_is_entered = true;
            n.entered_value = value;
        });
}

void retract_findings(node& observed) {
    require(observed.has_kind());
    retract(observed);
}

void retract_all_findings(domain& observed) noexcept {
    for (node* next = observed.oldest; next != nullptr; next = next->newer) retract(*next);
}

const junction_forest& required_forest(const domain& compiled) {
    const junction_forest* forest = forest_of(compiled);
    require(forest != nullptr, q_error_not_compiled);
    return *forest;
}

const compiled_node& propagated_node(const node& asked) {
    require(asked.has_kind());
    const node& source = asked.linked != nullptr ? *asked.linked : asked;
    const compiled_node& result = required_forest(*source.domain).of(source);
    require(result.tree->equilibrium != q_equilibrium_none, q_error_no_equilibrium);
    return result;
}

findings_view propagated_findings(const node& asked) {
    const compiled_node& source = propagated_node(asked);
    return forest_of(*source.owner->domain)->propagated(source);
}

bool has_evidence_to_propagate(const node& asked) noexcept {
    const junction_forest& forest = *forest_of(*asked.domain);
    const compiled_node& held = forest.of(asked);
    if (asked.is_discrete())
        return findings_differ(asked.evidence.view(), forest.propagated(held), asked.state_count);
    return asked.value_is_entered != held.value_is_propagated ||
           (asked.value_is_entered && asked.entered_value != held.propagated_value);
}

std::size_t changed_evidence(const junction_forest& forest, const junction_tree& tree) noexcept {
    std::size_t changed = 0;
    for_each_node_of(forest, tree, [&](const compiled_node& counted) {
        if (has_evidence_to_propagate(*counted.owner)) ++changed;
    });
    return changed;
}

void count_changed_evidence(junction_forest& forest, junction_tree& tree) noexcept {
    tree.changed_evidence = changed_evidence(forest, tree);
}

void update_evidence_flags(junction_forest& forest, junction_tree& tree) noexcept {
    tree.evidence_is_propagated = false;
    tree.likelihood_is_propagated = false;
    tree.cg_evidence_is_propagated = false;
    for_each_node_of(forest, tree, [&](const compiled_node& member) {
        tree.evidence_is_propagated |= evidence_is_propagated(member);
        tree.likelihood_is_propagated |= forest.propagated(member).is_likelihood();
        tree.cg_evidence_is_propagated |= member.value_is_propagated;
    });
}

void require_excluded_are_instantiated(const domain& propagated) {
    for (const node* excluded : propagated.settings.excluded)
        require(excluded->evidence.index >= 0, q_error_invalid_evidence);
}

}  // namespace quarn
