// The junction forest: cliques, the separators that link them, and a clique for every table and every belief.
//
//   Maps     a domain with numbered vertices, the maximal cliques of its triangulated graph -> junction forest
//   Cost     near-linear in the sum of the clique sizes and families; then the tables are allocated, not filled
//   Method   [Jensen, Lauritzen & Olesen 1990]
#include "forest_construction.h"

#include <algorithm>

#include "clique_choice.h"
#include "clique_tree.h"
#include "compile_log.h"
#include "errors.h"
#include "sizes.h"
#include "table.h"

namespace quarn {
namespace {

class forest_construction {
public:
    explicit forest_construction(domain& source)
        : source_(source), log_(source.log), forest_(std::make_unique<junction_forest>()) {
        for (node* member = source.oldest; member != nullptr; member = member->newer) {
            if (!member->has_kind()) continue;
            compiled_node& entry = forest_->nodes.emplace_back();
            entry.owner = member;
            entry.first_belief = belief_count_;
            belief_count_ = saturating_sum(belief_count_, member->state_count);
        }
    }

    std::unique_ptr<junction_forest> run(const clique_list& cliques) {
        create_cliques(cliques);
        log_cliques(log_, forest_->cliques);
        refuse_sizes();
        link_cliques();
        list_neighbors();
        check_tables();
        assign_tables();
        choose_best_cliques();
        allocate_tables();
        return std::move(forest_);
    }

private:
    // Children first; the list of cliques begins with the newest.
    void create_cliques(const clique_list& cliques) {
        const clique_forest links = make_clique_forest(cliques, forest_->nodes.size());
        std::vector<clique*> created(cliques.size());
        std::size_t number = 0;
        for (const std::size_t position : links.bottom_up)
            created[position] = &create_clique(cliques[position], ++number);
        for (const std::size_t position : links.bottom_up)
            parents_.push_back(links.parents[position] == no_clique ? nullptr
                                                                    : created[links.parents[position]]);
        std::ranges::reverse(forest_->cliques);
        std::ranges::reverse(parents_);
    }

    clique& create_clique(const vertex_set& members, std::size_t number) {
        clique& created = *forest_->cliques.emplace_back(std::make_unique<clique>());
        created.number = number;
        created.members.reserve(members.size());
        for (const vertex member : members) created.members.append(forest_->nodes[member].owner);
        created.size = configurations(created.members);
        return created;
    }

    // A separator is never larger than its cliques.
    void refuse_sizes() {
        log_.flush();
        for (const auto& made : forest_->cliques) require(made->size < largest_size, q_error_size_too_large);
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
        std::ranges::copy_if(child.members, std::back_inserter(made.members),
                             [&](const node* member) { return holds(parent, *member); });
        made.size = configurations(made.members);
        made.in_parent = make_loop_plan(parent.members, made.members);
        made.in_child = make_loop_plan(child.members, made.members);
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

    void check_tables() {
        log_.print("\n\nChecking tables for all nodes:\n\n");
        for (const compiled_node& checked : forest_->nodes) {
            if (!checked.owner->own_table && log_.is_set())
                log_.print("    Warning: Node `%s' has no table\n", node_name(*checked.owner));
            own_table(*checked.owner);
        }
    }

    void assign_tables() {
        log_.print("\n\nAssignment of potentials to cliques:\n\n");
        const clique_index index(*forest_);
        for (compiled_node& assigned : forest_->nodes) {
            const std::span<node* const> family = own_table(*assigned.owner).nodes;
            clique& home = index.smallest_with(family);
            assigned.home = &home;
            home.tables.push_back({assigned.owner, make_loop_plan(home.members, family)});
            home.tree->nodes.append(assigned.owner);
            if (log_.is_set())
                log_.print("    Node %s assigned to clique %s\n", node_name(*assigned.owner),
                           format_size(home.number).data());
        }
    }

    void choose_best_cliques() {
        for (compiled_node& read : forest_->nodes) {
            read.best = &best_clique(read);
            read.in_best = make_loop_plan(read.best->members, {&read.owner, 1});
        }
    }

    // Each table alone may fit where all together do not.
    void refuse_total() const {
        std::size_t entries = belief_count_;
        for (const auto& made : forest_->cliques) entries = saturating_sum(entries, made->size);
        for (const auto& made : forest_->separators) entries = saturating_sum(entries, made->size);
        require(saturating_product(entries, sizeof(double)) <= machine_memory(), q_error_no_memory);
    }

    void allocate_tables() {
        refuse_total();
        std::size_t largest = 0;
        for (const auto& made : forest_->cliques) made->table = number_array(made->size);
        for (const auto& made : forest_->separators) {
            made->table = number_array(made->size);
            largest = std::max(largest, made->size);
        }
        for (const compiled_node& read : forest_->nodes) largest = std::max(largest, read.owner->state_count);
        forest_->beliefs = number_array(belief_count_);
        forest_->scratch = number_array(largest);
    }

    domain& source_;
    log_file& log_;
    std::unique_ptr<junction_forest> forest_;
    std::vector<clique*> parents_;  // of the cliques in the list; null: a root
    std::size_t belief_count_ = 0;
};

}  // namespace

std::unique_ptr<junction_forest> make_junction_forest(domain& source, const clique_list& cliques) {
    return forest_construction(source).run(cliques);
}

}  // namespace quarn
