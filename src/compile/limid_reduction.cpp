// Informational links that no best policy needs. A parent of a decision is requisite when, given the rest of the family,
// it is d-connected to a utility that the decision can influence. One search from these utilities finds all requisite
// parents of the decision at once: they are the observations that a Bayes ball meets [Shachter 1998]. For whether a way
// ends at a parent does not depend on whether that parent, too, is observed.
//
//   Maps     a domain -> the links to remove; which these are does not depend on the order [Lauritzen & Nilsson 2001]
//   Cost     a search is linear in nodes and links; one for each decision, again after a round that removed links
//   Differs  from the d-separation that is asked for (d_separation.h): a decision passes on what its policy is based on,
//            in both directions, and utilities are where the ways begin; a chain component is one node, which its parents
//            lead to and each member is read off
#include "limid_reduction.h"

#include <vector>

#include "chain_component.h"
#include "links.h"

namespace quarn {
namespace {

// A node of the copied diagram, with what the last search knows of it.
struct member {
    node* original;  // null: a chain component
    std::vector<member*> parents;
    std::vector<member*> children;

    bool is_utility() const noexcept { return original != nullptr && original->is_utility(); }
    bool is_decision() const noexcept { return original != nullptr && original->is(q_category_decision); }

    bool is_descendant = false;  // of the decision, or itself
    bool is_observed = false;    // in the family of the decision
    bool is_met = false;
    bool sent_up = false;
    bool sent_down = false;
};

struct informational_link {
    node* decision;
    node* parent;
};

// A copy of the diagram without links from real-valued functions, of which there is no belief, and without links into
// functions, which are computed from results.
class limid {
public:
    explicit limid(domain& copied) {
        copied.number_nodes();
        members_.reserve(copied.node_count + copied.components.size());
        for (node* original = copied.oldest; original != nullptr; original = original->newer)
            members_.push_back({.original = original, .parents = {}, .children = {}});
        for (member& child : members_)
            if (!child.original->is_function() && child.original->component == nullptr)
                link_parents(*child.original, child);
        for (const auto& component : copied.components) {
            member& whole = members_.emplace_back();
            for (const node* joined : component->members) {
                link_parents(*joined, whole);
                link(whole, members_[joined->number - 1]);
            }
        }
    }

    // Those removed from the copy, until all that are left are requisite.
    std::vector<informational_link> remove_nonrequisite_parents() {
        std::vector<informational_link> removed;
        std::size_t before = 0;
        do {
            before = removed.size();
            // What is decided late is often created late; links that it loses may make earlier ones unneeded.
            for (auto decision = members_.rbegin(); decision != members_.rend(); ++decision)
                if (decision->is_decision()) remove_nonrequisite_parents(*decision, removed);
        } while (removed.size() > before);
        return removed;
    }

private:
    static void link(member& parent, member& child) {
        child.parents.push_back(&parent);
        parent.children.push_back(&child);
    }

    void link_parents(const node& original, member& child) {
        for (const node* parent : original.parents)
            if (parent->has_kind()) link(members_[parent->number - 1], child);
    }

    void remove_nonrequisite_parents(member& decision, std::vector<informational_link>& removed) {
        find_requisite(decision);
        std::erase_if(decision.parents, [&](member* parent) {
            if (parent->is_met || parent->original->is_function()) return false;
            removed.push_back({decision.original, parent->original});
            std::erase(parent->children, &decision);
            return true;
        });
    }

    // Meets the requisite ones among the parents.
    void find_requisite(member& decision) {
        for (member& any : members_)
            any.is_descendant = any.is_observed = any.is_met = any.sent_up = any.sent_down = false;
        decision.is_observed = true;
        for (member* parent : decision.parents) parent->is_observed = true;
        for (member* utility : influenced_utilities(decision)) meet(*utility, true);
        while (!balls_.empty()) {
            const ball taken = balls_.back();
            balls_.pop_back();
            for (member* next : taken.goes_up ? taken.from->parents : taken.from->children)
                meet(*next, taken.goes_up);
        }
    }

    static std::vector<member*> influenced_utilities(member& decision) {
        std::vector<member*> utilities;
        std::vector<member*> open{&decision};
        while (!open.empty()) {
            const member& met = *open.back();
            open.pop_back();
            for (member* child : met.children) {
                if (child->is_descendant) continue;
                child->is_descendant = true;
                (child->is_utility() ? utilities : open).push_back(child);
            }
        }
        return utilities;
    }

    // A ball comes from a child, or from a parent: observed nodes send it back to their parents in the latter case, and
    // stop it otherwise; the others send it on.
    void meet(member& met, bool from_child) {
        met.is_met = true;
        if (met.is_observed != from_child) send(met, true, met.sent_up);
        if (!met.is_observed) send(met, false, met.sent_down);
    }

    void send(member& from, bool up, bool& is_sent) {
        if (is_sent) return;
        is_sent = true;
        balls_.push_back({&from, up});
    }

    struct ball {
        member* from;
        bool goes_up;
    };

    std::vector<member> members_;  // in creation order
    std::vector<ball> balls_;      // sent, but not met by anyone yet
};

}  // namespace

std::size_t minimize_limid(domain& reduced) {
    const std::vector<informational_link> removed = limid(reduced).remove_nonrequisite_parents();
    std::vector<prepared_removal> models;
    for (const auto& [decision, parent] : removed)
        if (decision->model) models.emplace_back(*decision->model, *parent, 0);

    for (prepared_removal& prepared : models) prepared.commit();
    for (const auto& [decision, parent] : removed) remove_parent(*decision, *parent, 0);  // cannot fail now
    return removed.size();
}

}  // namespace quarn
