#include "chain_component.h"

#include <algorithm>
#include <unordered_set>

#include "ancestry.h"
#include "errors.h"
#include "functional_dependency.h"
#include "links.h"
#include "node.h"

namespace quarn {
namespace {

void append_new(std::vector<node*>& list, uint64_t mark, const handle_list<node>& added) {
    for (node* met : added) {
        if (met->mark == mark) continue;
        met->mark = mark;
        list.push_back(met);
    }
}

// The components that the nodes are in, from the oldest on.
std::vector<chain_component*> components_of(const domain& owner, std::span<node* const> nodes) {
    std::vector<chain_component*> found;
    for (const node* member : nodes)
        if (member->component != nullptr && std::ranges::find(found, member->component) == found.end())
            found.push_back(member->component);
    if (found.size() > 1) {
        std::vector<chain_component*> by_age;
        for (const std::unique_ptr<chain_component>& present : owner.components)
            if (std::ranges::find(found, present.get()) != found.end()) by_age.push_back(present.get());
        return by_age;
    }
    return found;
}

void require_suitable(domain& owner, std::span<node* const> children, std::span<node* const> parents) {
    const uint64_t mark = owner.new_mark();
    const auto require_new = [&](node& listed) {
        require(listed.domain == &owner && listed.is_discrete() && listed.mark != mark);
        listed.mark = mark;
    };
    require(!children.empty());
    for (node* child : children) {
        require_new(*child);
        require(child->is(q_category_chance));
    }
    for (node* parent : parents) require_new(*parent);
}

// What the first of the components that are merged, if there is one, gets as members.
std::vector<node*> nodes_beyond_first(std::span<chain_component* const> merged,
                                      std::span<node* const> children) {
    std::vector<node*> added;
    for (const chain_component* part : merged)
        if (part != merged.front()) added.insert(added.end(), part->members.begin(), part->members.end());
    std::ranges::copy_if(children, std::back_inserter(added),
                         [](const node* child) { return child->component == nullptr; });
    return added;
}

// Whether the new component would be above itself. What is new on such a way is a link from one of the parents, or it
// leads into or out of one of the nodes that are added.
bool closes_cycle(std::span<chain_component* const> merged, std::span<node* const> added,
                  std::span<node* const> parents) {
    const std::unordered_set<const node*> known(added.begin(), added.end());
    const auto is_member = [&](const node& met) {
        return (!merged.empty() && met.component == merged.front()) || known.contains(&met);
    };
    std::vector<node*> above(parents.begin(), parents.end()), below;
    for (const node* member : added) {
        above.insert(above.end(), member->parents.begin(), member->parents.end());
        below.insert(below.end(), member->children.begin(), member->children.end());
    }
    return leads_to(above, &node::parents, is_member) || leads_to(below, &node::children, is_member);
}

// Room for more items, without any change that can be seen.
template <class T>
void make_room(std::vector<T>& list, std::size_t more) {
    if (list.size() + more > list.capacity()) list.reserve(2 * list.size() + more);
}

}  // namespace

std::vector<node*> parents_of(const chain_component& component) {
    std::vector<node*> parents;
    const uint64_t mark = component.members[0]->domain->new_mark();
    for (const node* member : component.members) append_new(parents, mark, member->parents);
    return parents;
}

table& join_by_potential(domain& changed, std::span<node* const> children, std::span<node* const> parents) {
    require_suitable(changed, children, parents);
    const std::vector<chain_component*> merged = components_of(changed, children);
    const std::vector<node*> added = nodes_beyond_first(merged, children);
    require(!closes_cycle(merged, added, parents), q_error_cyclic_network);
    std::vector<node*> joined(parents.begin(), parents.end());
    joined.insert(joined.end(), children.begin(), children.end());
    require_joinable_beliefs(joined);

    prepared_links links(children, parents);
    std::unique_ptr<chain_component> created = merged.empty() ? std::make_unique<chain_component>() : nullptr;
    chain_component& target = created ? *created : *merged.front();
    std::unique_ptr<table> potential = new_table(table_type::probability, nullptr, joined);
    std::size_t potential_count = 1;
    for (const chain_component* part : merged)
        if (part != &target) potential_count += part->potentials.size();
    target.members.reserve(target.members.size() + added.size());
    make_room(target.potentials, potential_count);
    make_room(changed.components, 1);

    links.commit();
    for (chain_component* part : merged)
        if (part != &target) std::ranges::move(part->potentials, std::back_inserter(target.potentials));
    target.potentials.push_back(std::move(potential));
    for (node* member : added) {
        member->component = &target;
        target.members.append(member);
    }
    if (created)
        changed.components.push_back(std::move(created));
    else if (merged.size() > 1)
        std::erase_if(changed.components, [&](const std::unique_ptr<chain_component>& part) {
            return part.get() != &target && std::ranges::find(merged, part.get()) != merged.end();
        });
    changed.structure_changed();
    return *target.potentials.back();
}

}  // namespace quarn
