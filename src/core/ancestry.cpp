#include "ancestry.h"

#include "chain_component.h"

namespace quarn {
namespace {

const node_list& reach(node& start, node_list node::*neighbours) {
    node_list& reached = start.relatives;
    const uint64_t mark = start.domain->new_mark();
    const auto visit = [&](node* met) {
        if (met->mark == mark) return;
        met->mark = mark;
        reached.append(met);
    };
    reached.clear();
    visit(&start);
    for (std::size_t next = 0; next < reached.size(); ++next)
        for (node* neighbour : reached[next]->*neighbours) visit(neighbour);
    return reached;
}

}  // namespace

const node_list& ancestors(node& start) { return reach(start, &node::parents); }

const node_list& descendants(node& start) { return reach(start, &node::children); }

bool is_above(std::span<node* const> group, std::span<node* const> start) {
    domain& searched = *group.front()->domain;
    const uint64_t sought = searched.new_mark(), met = searched.new_mark();
    for (node* member : group) member->mark = sought;
    std::vector<node*> open;
    bool found = false;
    const auto visit = [&](node* above) {
        if (above->mark == sought) found = true;
        if (above->mark == sought || above->mark == met) return;
        above->mark = met;
        open.push_back(above);
    };
    for (node* above : start) visit(above);
    while (!open.empty() && !found) {
        const node& below = *open.back();
        open.pop_back();
        for (node* parent : below.parents) visit(parent);
        // A member that was met before has brought the others.
        if (chain_component* const joined = below.component; joined != nullptr && joined->mark != met) {
            joined->mark = met;
            for (node* member : joined->members) visit(member);
        }
    }
    return found;
}

bool link_closes_cycle(node& child, node& parent) {
    const auto is_free = [](const node& end, const node_list& beyond) {
        return end.component == nullptr && beyond.empty();
    };
    if (is_free(child, child.children) || is_free(parent, parent.parents)) return false;
    node* const start = &parent;
    node* const alone = &child;
    const std::span<node* const> group =
        child.component == nullptr
            ? std::span(&alone, 1)
            : std::span(child.component->members.begin(), child.component->members.size());
    return is_above(group, {&start, 1});
}

}  // namespace quarn
