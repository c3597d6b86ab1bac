#include "free_will.h"

#include <vector>

#include "chain_component.h"
#include "errors.h"
#include "evidence.h"

namespace quarn {
namespace {

std::vector<node*> open_decisions(const junction_tree& tree) {
    std::vector<node*> open;
    for (node* member : tree.nodes) {
        if (!member->is(q_category_decision)) continue;
        require(member->evidence.index != findings::general, q_error_invalid_evidence);
        if (member->evidence.index == findings::none && member->state_count > 1) open.push_back(member);
    }
    return open;
}

}  // namespace

// One walk from all of them at once.
void require_free_will(const domain& propagated, const junction_tree& tree) {
    if (propagated.counts.of_category(q_category_decision) == 0) return;
    std::vector<node*> influencing = open_decisions(tree);
    if (influencing.empty()) return;
    const uint64_t influenced = influencing.front()->domain->new_mark();
    const auto meet = [&](node& met) {
        if (!met.is(q_category_chance) || met.mark == influenced) return;
        require(!evidence_is_entered(met), q_error_invalid_evidence);
        met.mark = influenced;
        influencing.push_back(&met);
    };
    while (!influencing.empty()) {
        const node& met = *influencing.back();
        influencing.pop_back();
        for (node* child : met.children)
            if (child->component == nullptr)
                meet(*child);
            else
                for (node* member : child->component->members) meet(*member);
    }
}

}  // namespace quarn
