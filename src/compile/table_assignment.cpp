// Assignment of the nodes' tables to cliques.
//
//   Maps     triangulated domain -> domain ready for propagation
//   Cost     near-linear in the sum of the families; then the tables are allocated, not filled
#include "table_assignment.h"

#include <algorithm>

#include "clique_choice.h"
#include "compile_log.h"
#include "errors.h"

namespace quarn {
namespace {

class table_assignment {
public:
    table_assignment(domain& compiled, junction_forest& forest)
        : domain_(compiled), log_(compiled.log), forest_(forest) {}

    void run() {
        check_tables();
        assign();
        place_excluded();
        choose_best_cliques();
        plan_separators();
        allocate();
    }

private:
    template <class Visit>
    void for_each_table(const Visit& visit) const {
        for (node* member = domain_.oldest; member != nullptr; member = member->newer)
            if (!member->is_real_function()) visit(*member);
    }

    void check_tables() {
        log_.print("\n\nChecking tables for all nodes:\n\n");
        for_each_table([&](node& checked) {
            if (!checked.own_table) log_missing_table(log_, checked);
            own_table(checked);
        });
    }

    bool is_vertex(const node& member) const noexcept {
        return member.has_kind() && member.vertex < forest_.vertex_count;
    }

    // What a table is over when the excluded nodes are instantiated.
    std::vector<node*> remaining_nodes(node& owner) const {
        std::vector<node*> remaining;
        std::ranges::copy_if(own_table(owner).nodes, std::back_inserter(remaining),
                             [&](const node* member) { return is_vertex(*member); });
        return remaining;
    }

    void assign() {
        log_.print("\n\nAssignment of potentials to cliques:\n\n");
        const clique_index index(forest_);
        for_each_table([&](node& owner) {
            const std::vector<node*> nodes = remaining_nodes(owner);
            if (is_vertex(owner) || owner.is_utility() || !nodes.empty())
                assign_to(index.smallest_with(nodes), owner, nodes);
            if (is_vertex(owner)) forest_.of(owner).tree->nodes.append(&owner);
        });
    }

    void assign_to(clique& home, node& owner, std::span<node* const> nodes) {
        const auto first_continuous = std::ranges::find_if(nodes, &node::is_continuous);
        const std::span<node* const> discrete(nodes.begin(), first_continuous);
        (owner.is_utility() ? home.utilities : home.tables)
            .push_back({&owner, make_loop_plan(home.discrete_members(), discrete)});
        if (owner.has_kind()) {
            forest_.of(owner).home = &home;
            forest_.of(owner).tree = home.tree;
        }
        log_assignment(log_, owner, home);
    }

    // An excluded node whose table has nothing left goes with its first child outside the list, or the first tree.
    void place_excluded() noexcept {
        for (std::size_t i = forest_.vertex_count; i < forest_.nodes.size(); ++i) {
            compiled_node& placed = forest_.nodes[i];
            if (placed.home != nullptr) continue;
            placed.tree = forest_.trees.front().get();
            const auto child = std::ranges::find_if(placed.owner->children,
                                                    [&](const node* tested) { return is_vertex(*tested); });
            if (child != placed.owner->children.end()) placed.tree = forest_.of(**child).tree;
        }
    }

    void choose_best_cliques() {
        for (compiled_node& read : forest_.nodes) {
            if (!is_vertex(*read.owner)) continue;
            read.best = &best_clique(read);
            if (read.owner->is_discrete())
                read.in_best = make_loop_plan(read.best->discrete_members(), {&read.owner, 1});
        }
    }

    void plan_separators() {
        for (const auto& planned : forest_.separators) {
            const std::span<node* const> discrete(planned->members.begin(),
                                                  planned->members.size() - planned->size.continuous);
            planned->in_parent = make_loop_plan(planned->parent->discrete_members(), discrete);
            planned->in_child = make_loop_plan(planned->child->discrete_members(), discrete);
        }
    }

    // Each table alone may fit where all together do not.
    void refuse_total(std::size_t beliefs) const {
        std::size_t numbers = beliefs;
        for (const auto& made : forest_.cliques) numbers = saturating_sum(numbers, made->size.numbers());
        for (const auto& made : forest_.separators) numbers = saturating_sum(numbers, made->size.numbers());
        require(saturating_product(numbers, sizeof(double)) <= machine_memory(), q_error_no_memory);
    }

    void allocate() {
        std::size_t beliefs = 0, largest = 0;
        for (compiled_node& read : forest_.nodes) {
            read.first_belief = beliefs;
            beliefs = saturating_sum(beliefs, read.owner->state_count);
            largest = std::max(largest, read.owner->state_count);
        }
        refuse_total(beliefs);
        for (const auto& made : forest_.cliques) allocate_table(*made);
        for (const auto& made : forest_.separators) {
            allocate_table(*made);
            largest = std::max(largest, made->size.configurations);
        }
        forest_.beliefs = number_array(beliefs);
        forest_.scratch = number_array(largest);
    }

    template <class Holder>
    static void allocate_table(Holder& holder) {
        if (holder.size.continuous == 0) {
            holder.table = number_array(holder.size.configurations);
            return;
        }
        holder.cg_table = new_table(table_type::probability, nullptr, holder.members);
        holder.cg_table->materialise();
    }

    domain& domain_;
    log_file& log_;
    junction_forest& forest_;
};

}  // namespace

void assign_tables(domain& compiled, junction_forest& forest) { table_assignment(compiled, forest).run(); }

}  // namespace quarn
