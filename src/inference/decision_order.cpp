#include "decision_order.h"

#include <algorithm>

#include "chain_component.h"

namespace quarn {
namespace {

using decisions = std::vector<node*>;

// The decisions among the descendants of one, the newest first.
decisions later_decisions(node& first) {
    const uint64_t met = first.domain->new_mark();
    std::vector<node*> reached{&first};
    decisions later;
    const auto meet = [&](node& descendant) {
        if (descendant.mark == met) return;
        descendant.mark = met;
        reached.push_back(&descendant);
        if (descendant.is(q_category_decision)) later.push_back(&descendant);
    };
    for (std::size_t next = 0; next < reached.size(); ++next)
        for (node* child : reached[next]->children)
            if (child->component == nullptr)
                meet(*child);
            else
                for (node* member : child->component->members) meet(*member);
    std::ranges::sort(later, std::greater(), &node::number);
    return later;
}

struct visit {
    node* decision;
    decisions later;
    std::size_t next = 0;
};

// A depth-first search from the decision; those that it is through with are appended.
void append_in_post_order(node& from, std::vector<bool>& met, decisions& ordered) {
    std::vector<visit> open;
    const auto enter = [&](node& decision) {
        met[decision.number] = true;
        open.push_back({&decision, later_decisions(decision)});
    };
    enter(from);
    while (!open.empty()) {
        visit& last = open.back();
        if (last.next == last.later.size()) {
            ordered.push_back(last.decision);
            open.pop_back();
        } else if (node& later = *last.later[last.next++]; !met[later.number]) {
            enter(later);
        }
    }
}

}  // namespace

std::vector<node*> order_decisions(domain& asked) {
    asked.number_nodes();
    std::vector<bool> met(asked.node_count + 1);
    decisions ordered;
    for (node* decision = asked.oldest; decision != nullptr; decision = decision->newer)
        if (decision->is(q_category_decision) && !met[decision->number])
            append_in_post_order(*decision, met, ordered);
    return ordered;
}

}  // namespace quarn
