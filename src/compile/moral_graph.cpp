// Moralisation: drop the directions of the links and marry the parents of each child [Lauritzen & Spiegelhalter 1988].
//
//   Maps     a domain -> undirected graph over its nodes with a kind, with sorted neighbours
//   Cost     the sum of squares of the family sizes, and O(d log d) for each node with d neighbours
//   Differs  a function node is not linked to its parents, but married to the other parents of its children; the
//            parents of a utility are married though it is no vertex itself
#include "moral_graph.h"

#include <algorithm>

#include "node.h"

namespace quarn {
namespace {

class moralisation {
public:
    explicit moralisation(domain& source) : source_(source) {}

    graph run() {
        number_vertices();
        source_.log.print("\n\nMoral links:\n\n");
        for (node* member = source_.oldest; member != nullptr; member = member->newer)
            if (member->has_kind()) gather_neighbors(*member);
        return std::move(moral_);
    }

private:
    void number_vertices() {
        for (node* member = source_.oldest; member != nullptr; member = member->newer) {
            member->vertex = no_vertex;
            if (!member->has_kind()) continue;
            member->vertex = moral_.domains.size();
            moral_.domains.push_back(
                {member->is_continuous() ? 1 : member->state_count, member->is_continuous()});
        }
        moral_.neighbors.resize(moral_.domains.size());
    }

    void gather_neighbors(node& member) {
        mark_ = source_.new_mark();
        member.mark = mark_;
        if (!member.is_function()) gather_parents(member);
        for (node* child : member.children)
            if (child->is(q_category_chance) || child->is(q_category_decision)) meet(member, *child);
        for (node* child : member.children)
            if (!child->is_function()) marry_parents(member, *child);
        std::ranges::sort(moral_.neighbors[member.vertex]);
    }

    void gather_parents(node& member) {
        for (node* parent : member.parents)
            if (parent->has_kind()) meet(member, *parent);
    }

    void marry_parents(node& member, node& child) {
        for (node* partner : child.parents)
            if (partner->has_kind() && meet(member, *partner) && member.vertex < partner->vertex)
                log_marriage(member, *partner);
    }

    // Whether the neighbour is a new one.
    bool meet(node& member, node& neighbor) {
        if (neighbor.mark == mark_) return false;
        neighbor.mark = mark_;
        moral_.neighbors[member.vertex].push_back(neighbor.vertex);
        return true;
    }

    void log_marriage(node& first, node& second) {
        if (source_.log.is_set())
            source_.log.print("    Marrying %s and %s\n", node_name(first), node_name(second));
    }

    domain& source_;
    graph moral_;
    uint64_t mark_ = 0;  // of the neighbours met so far
};

}  // namespace

graph make_moral_graph(domain& source) { return moralisation(source).run(); }

}  // namespace quarn
