#include "chain_component.h"

#include <algorithm>

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
    std::vector<node*> members;
    for (const chain_component* part : merged)
        members.insert(members.end(), part->members.begin(), part->members.end());
    for (node* child : children)
        if (child->component == nullptr) members.push_back(child);
    std::vector<node*> above(parents.begin(), parents.end());
    for (const node* member : members)
        above.insert(above.end(), member->parents.begin(), member->parents.end());
    require(!is_above(members, above), q_error_cyclic_network);
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
    target.members.reserve(members.size());
    make_room(target.potentials, potential_count);
    make_room(changed.components, 1);

    links.commit();
    for (chain_component* part : merged)
        if (part != &target) std::ranges::move(part->potentials, std::back_inserter(target.potentials));
    target.potentials.push_back(std::move(potential));
    for (std::size_t i = target.members.size(); i < members.size(); ++i) {
        members[i]->component = &target;
        target.members.append(members[i]);
    }
    if (created)
        changed.components.push_back(std::move(created));
    else
        std::erase_if(changed.components, [&](const std::unique_ptr<chain_component>& part) {
            return part.get() != &target && std::ranges::find(merged, part.get()) != merged.end();
        });
    changed.uncompile();
    return *target.potentials.back();
}

}  // namespace quarn
