// Search for d-connected nodes. Among the ancestors of sources and evidence it goes along the links of their moral
// graph [Lauritzen et al. 1990], which is not built: a child among them leads on to its other parents, an observed one
// to nothing but these. All other nodes are reached from their parents.
//
//   Maps     a domain, sources and evidence -> a mark on every node
//   Cost     linear in nodes and links
//   Differs  belief goes up neither from a function, which is computed from its parents and says nothing of them, nor
//            from a decision, whose choice is free (so that evidence must not depend on one that is not made), nor to
//            a real-valued function, of which there is no belief; a chain component counts as one node, whose parents and
//            children are those of every member, so that observed members do not part the others from each other
#include "d_separation.h"

#include <utility>
#include <vector>

#include "chain_component.h"
#include "errors.h"
#include "node.h"

namespace quarn {
namespace {

bool informs_parents(const node& child) noexcept {
    return !child.is_function() && !child.is(q_category_decision);
}

class separation_search {
public:
    separation_search(domain& searched, const separation_query& query)
        : searched_(searched),
          ancestral_(searched.new_mark()),
          observed_(searched.new_mark()),
          opened_(searched.new_mark()),
          reached_ancestral_(searched.new_mark()),
          reached_other_(searched.new_mark()) {
        mark_ancestors(query.hard_evidence);
        mark_ancestors(query.soft_evidence);
        for_each(query.hard_evidence, [&](node& observed) { observed.mark = observed_; });
        require_no_ancestral_decision();
        mark_ancestors(query.sources);
        for_each(query.sources, [&](node& source) { reach_ancestral(source); });
        require_no_ancestral_decision();  // but for sources, which are reached by now
        follow_links();
    }

    bool reaches(const node& asked) const noexcept { return asked.mark >= reached_ancestral_; }

private:
    template <class Action>
    static void for_each(node* const* listed, Action&& act) {
        for (; *listed != nullptr; ++listed) act(**listed);
    }

    node& take_open() noexcept {
        node& taken = *open_.back();
        open_.pop_back();
        return taken;
    }

    void mark_ancestors(node* const* descendants) {
        for_each(descendants, [&](node& descendant) { meet_ancestor(descendant); });
        while (!open_.empty()) {
            const node& met = take_open();
            if (met.component != nullptr && std::exchange(met.component->mark, ancestral_) != ancestral_)
                for (node* member : met.component->members) meet_ancestor(*member);
            if (!informs_parents(met)) continue;
            for (node* parent : met.parents)
                if (parent->has_kind()) meet_ancestor(*parent);
        }
    }

    void meet_ancestor(node& met) {
        if (met.mark >= ancestral_) return;
        met.mark = ancestral_;
        open_.push_back(&met);
    }

    void require_no_ancestral_decision() const {
        if (searched_.counts.of_category(q_category_decision) == 0) return;
        for (const node* member = searched_.oldest; member != nullptr; member = member->newer)
            require(!member->is(q_category_decision) || member->mark != ancestral_, q_error_invalid_evidence);
    }

    void follow_links() {
        while (!open_.empty()) {
            const node& met = take_open();
            const bool is_ancestral = met.mark == reached_ancestral_;
            if (met.component == nullptr)
                go_on_from(met, is_ancestral);
            else if (std::exchange(met.component->mark, reached_other_) != reached_other_)
                for (node* member : met.component->members) {
                    reach(*member);
                    go_on_from(*member, is_ancestral);
                }
        }
    }

    void go_on_from(const node& met, bool is_ancestral) {
        if (is_ancestral) reach_parents(met);
        for (node* child : met.children) {
            if (is_ancestral && child->mark == observed_) open_collider(*child);
            reach(*child);
        }
    }

    // From any of its parents, but once for all of them.
    void open_collider(node& observed) {
        observed.mark = opened_;
        if (observed.component == nullptr) return reach_parents(observed);
        reach_members(*observed.component);
        if (observed.component->mark >= opened_) return;
        observed.component->mark = opened_;
        for (node* member : observed.component->members) reach_parents(*member);
    }

    void reach_members(chain_component& reached) {
        if (reached.mark >= observed_) return;
        reached.mark = observed_;
        for (node* member : reached.members) reach_ancestral(*member);
    }

    void reach_parents(const node& child) {
        if (!informs_parents(child)) return;
        for (node* parent : child.parents)
            if (parent->component == nullptr)
                reach_ancestral(*parent);
            else
                reach_members(*parent->component);
    }

    void reach(node& met) {
        reach_ancestral(met);
        reach_other(met);
    }

    void reach_ancestral(node& met) {
        if (met.mark != ancestral_) return;
        met.mark = reached_ancestral_;
        open_.push_back(&met);
    }

    void reach_other(node& met) {
        if (met.mark >= ancestral_) return;
        met.mark = reached_other_;
        open_.push_back(&met);
    }

    domain& searched_;
    std::vector<node*> open_;  // met or reached, but not gone on from yet

    // A node has the mark of another walk, which is smaller than all of these, until it is met.
    const uint64_t ancestral_;  // a source, evidence, or an ancestor of these
    const uint64_t observed_;   // by hard evidence
    const uint64_t opened_;     // observed, and a parent of it was reached
    const uint64_t reached_ancestral_;
    const uint64_t reached_other_;
};

void require_nodes_of(const domain& asked, node* const* listed) {
    for (; *listed != nullptr; ++listed) require((*listed)->domain == &asked && (*listed)->has_kind());
}

}  // namespace

const handle_list<node>& nodes_by_separation(domain& asked, const separation_query& query,
                                             separation wanted) {
    for (node* const* listed : {query.sources, query.hard_evidence, query.soft_evidence})
        require_nodes_of(asked, listed);
    const separation_search search(asked, query);
    handle_list<node>& result = asked.separation_result;
    result.reserve(asked.node_count);
    result.clear();
    for (node* member = asked.oldest; member != nullptr; member = member->newer)
        if (search.reaches(*member) == (wanted == separation::connected)) result.append(member);
    return result;
}

}  // namespace quarn
