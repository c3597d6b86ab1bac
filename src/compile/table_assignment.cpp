// Assignment of the tables of nodes and chain components to cliques.
//
//   Maps     triangulated domain -> domain ready for propagation
//   Cost     near-linear in the sum of the families; then the tables are allocated, not filled
#include "table_assignment.h"

#include <algorithm>

#include "chain_component.h"
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
        find_top_cliques();
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
    std::vector<node*> remaining_nodes(const table& whole) const {
        std::vector<node*> remaining;
        std::ranges::copy_if(whole.nodes, std::back_inserter(remaining),
                             [&](const node* member) { return is_vertex(*member); });
        return remaining;
    }

    void assign() {
        log_.print("\n\nAssignment of potentials to cliques:\n\n");
        const clique_index index(forest_);
        for_each_table([&](node& owner) {
            const std::vector<node*> nodes = remaining_nodes(own_table(owner));
            if (owner.is_utility()) {
                owner.vertex = forest_.utilities.size();
                forest_.utilities.emplace_back().owner = &owner;
            }
            if (is_vertex(owner) || owner.is_utility() || !nodes.empty())
                assign_to(index.smallest_with(nodes), owner, nodes);
            if (is_vertex(owner)) forest_.of(owner).tree->nodes.append(&owner);
        });
        for (const auto& component : domain_.components) assign(*component, index);
    }

    static assigned_table& assign_to(clique& home, std::vector<assigned_table>& tables, table& whole,
                                     std::span<node* const> nodes) {
        const auto first_continuous = std::ranges::find_if(nodes, &node::is_continuous);
        const std::span<node* const> discrete(nodes.begin(), first_continuous);
        assigned_table& assigned = tables.emplace_back();
        assigned.whole = &whole;
        assigned.in_clique = make_loop_plan(home.discrete_members(), discrete);
        if (nodes.size() < whole.nodes.size()) {
            assigned.slice = new_table(whole.type, nullptr, nodes);
            assigned.slice->roles = whole.roles;
        }
        return assigned;
    }

    void assign_to(clique& home, node& owner, std::span<node* const> nodes) {
        auto& tables = owner.is_utility() ? home.utility_tables : home.tables;
        assign_to(home, tables, *owner.own_table, nodes).owner = &owner;
        if (owner.is_utility()) {
            forest_.utilities.back().tree = home.tree;
            home.tree->has_utilities = true;
        } else {
            forest_.of(owner).home = &home;
            forest_.of(owner).tree = home.tree;
        }
        log_assignment(log_, owner, home);
    }

    void assign(const chain_component& component, const clique_index& index) {
        std::vector<node*> parents = parents_of(component);
        std::erase_if(parents, [](const node* parent) { return !parent->is_discrete(); });
        compiled_component& compiled = forest_.components.emplace_back();
        compiled.component = &component;
        compiled.log_normalizer = new_table(table_type::zeros, nullptr, parents);
        clique& home = assign_shared(*compiled.log_normalizer, index, true);
        compiled.tree = home.tree;
        log_assignment(log_, component, home);
        for (const auto& potential : component.potentials)
            log_assignment(log_, *potential, assign_shared(*potential, index, false));
    }

    clique& assign_shared(table& whole, const clique_index& index, bool holds_logarithms) {
        const std::vector<node*> nodes = remaining_nodes(whole);
        clique& home = index.smallest_with(nodes);
        assign_to(home, home.tables, whole, nodes).holds_logarithms = holds_logarithms;
        home.tree->has_chain_tables = true;
        return home;
    }

    // An excluded node whose table has nothing left goes with its first child outside the list, or the first tree.
    void place_excluded() {
        for (std::size_t i = forest_.vertex_count; i < forest_.nodes.size(); ++i) {
            compiled_node& placed = forest_.nodes[i];
            if (placed.home != nullptr) {
                placed.tree->excluded.push_back(&placed);
                continue;
            }
            placed.tree = forest_.trees.front().get();
            const auto child = std::ranges::find_if(placed.owner->children,
                                                    [&](const node* tested) { return is_vertex(*tested); });
            if (child != placed.owner->children.end()) placed.tree = forest_.of(**child).tree;
            placed.tree->excluded.push_back(&placed);
        }
    }

    void find_top_cliques() noexcept {
        for (const auto& tree : forest_.trees)
            for (clique* holder : tree->cliques)  // parents come first
                for (const node* member : holder->members)
                    if (compiled_node& held = forest_.of(*member); held.top == nullptr) held.top = holder;
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
            const auto discrete = planned->discrete_members();
            planned->in_parent = make_loop_plan(planned->parent->discrete_members(), discrete);
            planned->in_child = make_loop_plan(planned->child->discrete_members(), discrete);
        }
    }

    // Numbers of a clique or separator: its table, its utilities and, where its moments are read or sent as those of a
    // joint distribution, a table for these.
    static std::size_t numbers_of(const table_size& size, bool with_utilities, bool twice) noexcept {
        const std::size_t utilities = with_utilities ? size.configurations : 0;
        return saturating_sum(saturating_sum(size.numbers(), utilities), twice ? size.numbers() : 0);
    }

    static bool needs_joint(const clique& asked) noexcept {
        return asked.to_parent != nullptr && asked.to_parent->size.continuous > 0;
    }

    // Each table alone may fit where all together do not.
    void refuse_total(std::size_t states) const {
        std::size_t numbers = saturating_product(states, 3);
        for (const auto& made : forest_.cliques)
            numbers = saturating_sum(numbers,
                                     numbers_of(made->size, made->tree->has_utilities, needs_joint(*made)));
        for (const auto& made : forest_.separators)
            numbers = saturating_sum(
                numbers, numbers_of(made->size, made->child->tree->has_utilities, made->size.continuous > 0));
        require(saturating_product(numbers, sizeof(double)) <= machine_memory(), q_error_no_memory);
    }

    void allocate() {
        std::size_t states = 0, largest = 0;
        for (compiled_node& read : forest_.nodes) {
            read.first_state = states;
            states = saturating_sum(states, read.owner->state_count);
            largest = std::max(largest, read.owner->state_count);
        }
        refuse_total(states);
        for (const auto& made : forest_.cliques) {
            allocate(*made);
            for (const assigned_table& assigned : made->utility_tables)
                largest = std::max(largest, assigned.in_clique.smaller_size());
        }
        for (const auto& made : forest_.separators) {
            allocate(*made);
            largest = std::max(largest, made->size.configurations);
        }
        for (compiled_node& read : forest_.nodes)
            if (read.owner->is_continuous()) allocate_reading(read);
        forest_.beliefs = number_array(states);
        forest_.propagated_weights = number_array(states);
        std::ranges::fill(forest_.propagated_weights, 1.0);
        if (!forest_.utilities.empty()) {
            forest_.expected_utilities = number_array(states);
            std::ranges::fill(forest_.expected_utilities, 0.0);
        }
        forest_.scratch = number_array(saturating_product(largest, 2));
    }

    static std::unique_ptr<table> new_cg_table(std::span<node* const> nodes) {
        auto made = new_table(table_type::probability, nullptr, nodes);
        made->materialise();
        return made;
    }

    static void allocate(clique& holder) {
        if (holder.size.continuous == 0)
            holder.table = number_array(holder.size.configurations);
        else
            holder.cg_table = new_cg_table(holder.members);
        if (holder.tree->has_utilities) holder.utilities = number_array(holder.size.configurations);
        if (needs_joint(holder)) holder.joint = new_cg_table(holder.members);
        for (assigned_table& assigned : holder.tables)
            if (assigned.numbers().continuous_count() > 0)
                assigned.in_cg_table = make_cg_plan(*holder.cg_table, assigned.numbers());
    }

    static void allocate(separator& link) {
        link.table = number_array(link.size.configurations);
        if (link.child->tree->has_utilities) link.utilities = number_array(link.size.configurations);
        if (link.size.continuous == 0) return;
        link.message = std::make_unique<cg_message>();
        link.message->table = new_cg_table(link.members);
        link.message->in_parent = make_cg_plan(*link.parent->cg_table, *link.message->table);
        link.message->in_child = make_cg_plan(*link.child->cg_table, *link.message->table);
    }

    static void allocate_reading(compiled_node& read) {
        read.tree->has_continuous_nodes = true;
        read.reading = std::make_unique<cg_reading>();
        read.reading->table = new_cg_table({&read.owner, 1});
        read.reading->table->roles.front() = cg_role::head;
        read.reading->in_best = make_cg_plan(*read.best->cg_table, *read.reading->table);
    }

    domain& domain_;
    log_file& log_;
    junction_forest& forest_;
};

}  // namespace

void assign_tables(domain& compiled, junction_forest& forest) { table_assignment(compiled, forest).run(); }

}  // namespace quarn
