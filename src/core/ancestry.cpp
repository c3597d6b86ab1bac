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

bool leads_to(std::span<node* const> start, node_list node::*neighbours,
              const std::function<bool(const node&)>& is_sought) {
    if (start.empty()) return false;
    const uint64_t mark = start.front()->domain->new_mark();
    std::vector<node*> open;
    bool found = false;
    const auto visit = [&](node* met) {
        if (met->mark == mark) return;
        met->mark = mark;
        found |= is_sought(*met);
        open.push_back(met);
    };
    for (node* met : start) visit(met);
    while (!open.empty() && !found) {
        const node& from = *open.back();
        open.pop_back();
        for (node* next : from.*neighbours) visit(next);
        // A member that was met before has brought the others.
        if (chain_component* const joined = from.component; joined != nullptr && joined->mark != mark) {
            joined->mark = mark;
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
    return leads_to({&start, 1}, &node::parents, [&](const node& met) {
        return &met == &child || (child.component != nullptr && met.component == child.component);
    });
}

}  // namespace quarn
