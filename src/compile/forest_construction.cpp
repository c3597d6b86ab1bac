// The junction forest: cliques and the separators that link them.
//
//   Maps     a domain with its moral graph, a tree of the maximal cliques of a triangulation -> junction forest
//   Cost     near-linear in the sum of the clique sizes
//   Method   [Jensen, Lauritzen & Olesen 1990]
#include "forest_construction.h"

#include <algorithm>

#include "clique_choice.h"
#include "compile_log.h"
#include "errors.h"
#include "sizes.h"

namespace quarn {
namespace {

class forest_construction {
public:
    forest_construction(domain& source, const moral_graph& moral)
        : log_(source.log), moral_(moral), forest_(std::make_unique<junction_forest>()) {
        forest_->vertex_count = moral.nodes.size();
        forest_->nodes.reserve(moral.nodes.size() + source.settings.excluded.size());
        for (node* member : moral.nodes) forest_->nodes.emplace_back().owner = member;
        for (node* excluded : source.settings.excluded) {
            excluded->vertex = forest_->nodes.size();
            forest_->nodes.emplace_back().owner = excluded;
        }
    }

    std::unique_ptr<junction_forest> run(const triangulation& triangulated) {
        create_cliques(triangulated);
        log_cliques(log_, forest_->cliques);
        refuse_sizes();
        link_cliques();
        list_neighbors();
        return std::move(forest_);
    }

private:
    // Children first; the list of cliques begins with the newest.
    void create_cliques(const triangulation& triangulated) {
        const clique_forest& tree = triangulated.tree;
        std::vector<clique*> created(triangulated.cliques.size());
        std::size_t number = 0;
        for (const std::size_t position : tree.bottom_up)
            created[position] = &create_clique(triangulated.cliques[position], ++number);
        for (const std::size_t position : tree.bottom_up)
            parents_.push_back(tree.parents[position] == no_clique ? nullptr
                                                                   : created[tree.parents[position]]);
        std::ranges::reverse(forest_->cliques);
        std::ranges::reverse(parents_);
    }

    clique& create_clique(const vertex_set& members, std::size_t number) {
        clique& created = *forest_->cliques.emplace_back(std::make_unique<clique>());
        created.number = number;
        created.members.reserve(members.size());
        for (const bool continuous : {false, true})
            for (const vertex member : members)
                if (moral_.links.domains[member].is_continuous == continuous)
                    created.members.append(moral_.nodes[member]);
        created.size = size_of(created.members);
        return created;
    }

    // A separator is never larger than its cliques.
    void refuse_sizes() {
        log_.flush();
        for (const auto& made : forest_->cliques)
            require(made->size.numbers() < largest_size, q_error_size_too_large);
    }

    void link_cliques() {
        log_.print("\n\nThe junction forest:\n");
        for (std::size_t i = 0; i < parents_.size(); ++i) {
            clique& linked = *forest_->cliques[i];
            if (parents_[i] == nullptr)
                start_tree(linked);
            else
                link(*parents_[i], linked);
            linked.tree->cliques.append(&linked);
            for (const node* member : linked.members) forest_->of(*member).tree = linked.tree;
        }
    }

    void start_tree(clique& root) {
        auto started = std::make_unique<junction_tree>();
        started->root = &root;
        root.tree = started.get();
        if (!forest_->trees.empty()) forest_->trees.back()->next = started.get();
        forest_->trees.push_back(std::move(started));
        log_root(log_, root);
    }

    void link(clique& parent, clique& child) {
        separator& made = *forest_->separators.emplace_back(std::make_unique<separator>());
        made.parent = &parent;
        made.child = &child;
        for (node* member : child.members)
            if (holds(parent, *member)) made.members.append(member);
        made.size = size_of(made.members);
        child.to_parent = &made;
        child.tree = parent.tree;
        child.tree->separators.push_back(&made);
        log_separator(log_, made);
    }

    // The newest link comes first.
    void list_neighbors() {
        for (auto link = forest_->separators.rbegin(); link != forest_->separators.rend(); ++link) {
            (*link)->parent->neighbors.append((*link)->child);
            (*link)->child->neighbors.append((*link)->parent);
        }
    }

    log_file& log_;
    const moral_graph& moral_;
    std::unique_ptr<junction_forest> forest_;
    std::vector<clique*> parents_;  // of the cliques in the list; null: a root
};

}  // namespace

std::unique_ptr<junction_forest> make_junction_forest(domain& source, const moral_graph& moral,
                                                      const triangulation& triangulated) {
    return forest_construction(source, moral).run(triangulated);
}

}  // namespace quarn
