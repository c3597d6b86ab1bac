#include "functional_dependency.h"

#include <algorithm>

#include "chain_component.h"
#include "errors.h"

namespace quarn {
namespace {

// Whether belief can travel on through the children that are function nodes.
enum class trail_mode { around_functions, through_functions };

// Marks all nodes whose beliefs a change at the start can reach: through parents with a kind (a function node depends
// on its parents, it does not inform them), through children, and through chain components. The link from `absent` to
// `child` is not there.
class trail {
public:
    trail(node& start, trail_mode mode, const node* absent = nullptr, const node* child = nullptr)
        : mark_(start.domain->new_mark()), mode_(mode), absent_(absent), child_(child) {
        visit(start);
        while (!open_.empty()) {
            node& met = *open_.back();
            open_.pop_back();
            expand(met);
        }
    }
    bool reaches(const node& asked) const noexcept { return asked.mark == mark_; }

private:
    void visit(node& met) {
        if (met.mark == mark_) return;
        met.mark = mark_;
        open_.push_back(&met);
    }
    void expand(node& met) {
        if (!met.is_function())
            for (node* parent : met.parents)
                if (parent->has_kind() && !is_absent(*parent, met)) visit(*parent);
        for (node* child : met.children)
            if ((mode_ == trail_mode::through_functions || !child->is_function()) && !is_absent(met, *child))
                visit(*child);
        if (chain_component* const joined = met.component; joined != nullptr && joined->mark != mark_) {
            joined->mark = mark_;
            for (node* member : joined->members) visit(*member);
        }
    }
    bool is_absent(const node& from, const node& to) const noexcept {
        return &from == absent_ && &to == child_;
    }

    uint64_t mark_;
    trail_mode mode_;
    const node* absent_;
    const node* child_;
    std::vector<node*> open_;
};

// Whether every node met satisfies the condition, going from the start along the links through real-valued function
// nodes only. The start itself is not tested.
template <class Condition>
bool all_through_real_functions(node& start, node_list node::*neighbours, Condition&& holds) {
    const uint64_t mark = start.domain->new_mark();
    std::vector<node*> open{&start};
    while (!open.empty()) {
        node* const met = open.back();
        open.pop_back();
        for (node* next : met->*neighbours) {
            if (next->mark == mark) continue;
            next->mark = mark;
            if (!holds(*next)) return false;
            if (next->is_real_function()) open.push_back(next);
        }
    }
    return true;
}

bool is_independent_of_beliefs(node& function) {
    return all_through_real_functions(function, &node::parents, [](const node& n) { return !n.has_kind(); });
}

bool influences_only_real_functions(node& function) {
    return all_through_real_functions(function, &node::children,
                                      [](const node& n) { return n.is_real_function(); });
}

// Whether a value that a function computes would depend on itself by way of beliefs.
bool depends_on_itself(node& parent, node& child, const node* replaced) {
    const bool real_function = parent.is_real_function() || child.is_real_function();
    if (!real_function && trail(parent, trail_mode::around_functions, replaced, &child).reaches(child))
        return !parent.has_kind() || child.is_function();
    if (trail(parent, trail_mode::through_functions, replaced, &child).reaches(child))
        return parent.has_kind() && !child.is_function();
    return trail(child, trail_mode::through_functions, replaced, &child).reaches(parent);
}

// Whether the link leaves what decisions are based on independent of the values of functions.
bool decisions_are_independent(node& parent, node& child) {
    if (parent.has_kind() ? !child.is_function() : parent.is_function() && is_independent_of_beliefs(parent))
        return true;
    return child.is_real_function() && influences_only_real_functions(child);
}

}  // namespace

void require_no_functional_dependency(node& parent, node& child, const node* replaced) {
    const node_counts& counts = parent.domain->counts;
    const std::size_t decisions_and_utilities = counts.decisions_and_utilities();
    if (counts.functions() == 0 || decisions_and_utilities + counts.of_category(q_category_chance) == 0)
        return;
    // Belief that enters a function node leaves it to other functions only: nothing to be found, and no need to search.
    if (counts.function_links == 0 && !parent.is_function() && parent.has_kind() && !child.is_function())
        return;
    require(!depends_on_itself(parent, child, replaced), q_error_cyclic_functional_dependency);
    if (decisions_and_utilities > 0)
        require(decisions_are_independent(parent, child), q_error_functional_dependency);
}

void require_joinable_beliefs(std::span<node* const> joined) {
    const node_counts& counts = joined.front()->domain->counts;
    if (counts.functions() == 0 ||
        (counts.function_links == 0 && std::ranges::none_of(joined, &node::is_function)))
        return;
    std::vector<const node*> apart;
    for (node* start : joined) {
        const trail before(*start, trail_mode::around_functions);
        apart.clear();
        for (const node* other : joined)
            if (!before.reaches(*other)) apart.push_back(other);
        if (apart.empty()) return;
        const trail influenced(*start, trail_mode::through_functions);
        for (const node* other : apart)
            require(!influenced.reaches(*other), q_error_cyclic_functional_dependency);
    }
}

bool functions_influence_variables(domain& tested) {
    const uint64_t mark = tested.new_mark();
    std::vector<node*> open;
    const auto visit = [&](node* met) {
        if (met->mark == mark) return;
        met->mark = mark;
        open.push_back(met);
    };
    for (node* function = tested.oldest; function != nullptr; function = function->newer)
        if (function->is_function() && std::ranges::any_of(function->parents, &node::has_kind))
            visit(function);
    while (!open.empty()) {
        node* const met = open.back();
        open.pop_back();
        if (met->has_kind()) return true;
        for (node* child : met->children) visit(child);
    }
    return false;
}

}  // namespace quarn
