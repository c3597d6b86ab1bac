#include "ancestry.h"

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

bool link_closes_cycle(node& child, node& parent) {
    if (child.children.empty() || parent.parents.empty()) return false;
    const uint64_t mark = child.domain->new_mark();
    std::vector<node*> open{&parent};
    parent.mark = mark;
    while (!open.empty()) {
        node* const met = open.back();
        open.pop_back();
        for (node* above : met->parents) {
            if (above == &child) return true;
            if (above->mark == mark) continue;
            above->mark = mark;
            open.push_back(above);
        }
    }
    return false;
}

}  // namespace quarn
