// Moralisation: drop the directions of the links and marry the parents of each child [Lauritzen & Spiegelhalter 1988].
//
//   Maps     a domain -> undirected graph over its nodes with a kind, with sorted neighbours
//   Cost     the sum of squares of the family sizes, and O(d log d) for each node with d neighbours
//   Differs  a function node is not linked to its parents, but married to the other parents of its children; the
//            parents of a utility are married though it is no vertex itself; members of a potential of a chain
//            component are linked, and the parents of all its members married [Frydenberg 1990]; excluded nodes are no
//            vertices, their parents are married all the same
#include "moral_graph.h"

#include <algorithm>
#include <map>
#include <utility>

#include "chain_component.h"
#include "necessary_fill_ins.h"
#include "node.h"

namespace quarn {
namespace {

class moralisation {
public:
    explicit moralisation(domain& source) : source_(source) {}

    moral_graph run(std::span<node* const> order) {
        source_.number_nodes();
        excluded_ = source_.new_mark();
        for (node* member : source_.settings.excluded) member->mark = excluded_;
        for (node* member = source_.oldest; member != nullptr; member = member->newer)
            member->vertex = no_vertex;
        if (order.empty())
            for (node* member = source_.oldest; member != nullptr; member = member->newer)
                add_vertex(*member);
        for (node* member : order) add_vertex(*member);
        moral_.links.neighbors.resize(moral_.nodes.size());
        for (const auto& component : source_.components) take(*component);
        source_.log.print("\n\nMoral links:\n\n");
        for (node* member = source_.oldest; member != nullptr; member = member->newer)
            if (is_vertex(*member)) gather_neighbors(*member);
        return std::move(moral_);
    }

private:
    static bool is_vertex(const node& member) noexcept { return member.vertex != no_vertex; }

    void add_vertex(node& member) {
        if (!member.has_kind() || member.mark == excluded_) return;
        member.vertex = moral_.nodes.size();
        moral_.nodes.push_back(&member);
        moral_.links.domains.push_back(
            {member.is_continuous() ? 1 : member.state_count, member.is_continuous()});
    }

    void take(const chain_component& component) {
        parents_of_[&component].parents = parents_of(component);
        for (const auto& potential : component.potentials)
            for (const node* member : potential->nodes) potentials_of_[member].push_back(potential.get());
    }

    void gather_neighbors(node& member) {
        mark_ = source_.new_mark();
        member.mark = mark_;
        if (!member.is_function()) gather_parents(member);
        for (node* child : member.children)
            if (is_vertex(*child) && !child->is_function()) meet(member, *child);
        for (const table* potential : shared_by(member))
            for (node* joined : potential->nodes)
                if (is_vertex(*joined)) meet(member, *joined);
        for (node* child : member.children)
            if (!child->is_function()) marry_parents_of(member, *child);
        std::ranges::sort(moral_.links.neighbors[member.vertex]);
    }

    void gather_parents(node& member) {
        for (node* parent : member.parents)
            if (is_vertex(*parent)) meet(member, *parent);
    }

    std::span<const table* const> shared_by(const node& member) const {
        const auto found = potentials_of_.find(&member);
        return found != potentials_of_.end() ? std::span(found->second) : std::span<const table* const>();
    }

    void marry_parents_of(node& member, const node& child) {
        if (child.component == nullptr) return marry(member, {child.parents.begin(), child.parents.size()});
        component_parents& family = parents_of_[child.component];
        if (std::exchange(family.married_to, &member) != &member) marry(member, family.parents);
    }

    void marry(node& member, std::span<node* const> partners) {
        for (node* partner : partners)
            if (is_vertex(*partner) && meet(member, *partner) && member.number < partner->number)
                log_marriage(member, *partner);
    }

    // Whether the neighbour is a new one.
    bool meet(node& member, node& neighbor) {
        if (neighbor.mark == mark_) return false;
        neighbor.mark = mark_;
        moral_.links.neighbors[member.vertex].push_back(neighbor.vertex);
        return true;
    }

    void log_marriage(node& first, node& second) {
        if (source_.log.is_set())
            source_.log.print("    Marrying %s and %s\n", node_name(first), node_name(second));
    }

    struct component_parents {
        std::vector<node*> parents;
        const node* married_to = nullptr;  // most recently
    };

    domain& source_;
    moral_graph moral_;
    std::map<const chain_component*, component_parents> parents_of_;
    std::map<const node*, std::vector<const table*>> potentials_of_;
    uint64_t excluded_ = 0;  // the mark of excluded nodes
    uint64_t mark_ = 0;      // of the neighbours met so far
};

}  // namespace

moral_graph make_moral_graph(domain& source, std::span<node* const> order) {
    moral_graph made = moralisation(source).run(order);
    add_necessary_fill_ins(made, source);
    return made;
}

}  // namespace quarn
