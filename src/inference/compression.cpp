// Compression of the tables of a junction forest.
//
//   Maps     a forest -> the same over the configurations that are possible
//   Cost     three passes like those of a propagation, one walk over each clique for each table, neighbour and belief in
//            it, and a propagation before and after
//   Method   the tables of the nodes are multiplied together as 0 and 1, with maxima for messages: after a collection and
//            a distribution a clique has 1 where the product of all tables is positive somewhere, however small it is.
//            Decisions and functions rule out nothing, as their tables change with the results
#include "compression.h"

#include <algorithm>
#include <vector>

#include "beliefs.h"
#include "errors.h"
#include "function_nodes.h"
#include "initial_tables.h"
#include "propagation.h"
#include "table_operations.h"
#include "table_validation.h"
#include "walk.h"

namespace quarn {
namespace {

class compression {
public:
    compression(junction_forest& forest, const workers& allowed) : forest_(forest), workers_(allowed) {}

    // Leaves nothing of the numbers in the tables. Can fail, and then has changed nothing else.
    void prepare() {
        for (const auto& tree : forest_.trees) find_possible(*tree);
        for (const auto& link : forest_.separators) reduce(*link);
        for (compiled_node& read : forest_.nodes)
            if (read.best != nullptr) reduce(read.in_best, *read.best, {&read.owner, 1});
        for (const auto& holder : forest_.cliques) {
            for (assigned_table& assigned : holder->tables)
                reduce(assigned.in_clique, *holder, assigned.numbers().nodes);
            tables_.push_back({&holder->table, possible_in(holder->table)});
        }
    }

    void commit() noexcept {
        for (new_map& made : maps_) *made.replaced = std::move(made.map);
        for (const new_size& size : tables_) size.table->shrink(size.entries);
        for (const auto& tree : forest_.trees) tree->saved.reset();
        for (const auto& link : forest_.separators) link->weighted.reset();
        std::size_t largest = 1;
        for (compiled_node& read : forest_.nodes) {
            read.weighted_in_best.reset();
            largest = std::max(largest, read.owner->state_count);
        }
        for (const auto& link : forest_.separators) largest = std::max(largest, link->table.size());
        forest_.scratch.shrink(2 * largest);
        forest_.is_compressed = true;
    }

private:
    struct new_map {
        table_map* replaced;
        table_map map;
    };
    struct new_size {
        number_array* table;
        std::size_t entries;
    };

    static void to_ones(number_array& numbers) noexcept {
        for (double& number : numbers) number = number > 0 ? 1 : 0;
    }
    static std::size_t possible_in(const number_array& ones) noexcept {
        return static_cast<std::size_t>(std::ranges::count(ones, 1.0));
    }

    void find_possible(junction_tree& tree) {
        for (clique* filled : tree.cliques) {
            std::ranges::fill(filled->table, 1.0);
            for (const assigned_table& assigned : filled->tables) {
                if (!assigned.owner->is(q_category_chance)) continue;
                multiply(assigned.in_clique, filled->table.data(), assigned.numbers().data.data(), workers_);
                to_ones(filled->table);
            }
        }
        for (auto link = tree.separators.rbegin(); link != tree.separators.rend(); ++link)
            send((*link)->table, (*link)->in_child, *(*link)->child, (*link)->in_parent, *(*link)->parent);
        for (separator* link : tree.separators)
            send(link->table, link->in_parent, *link->parent, link->in_child, *link->child);
    }

    void send(number_array& message, const table_map& in_sender, const clique& sender,
              const table_map& in_receiver, clique& receiver) {
        max_marginal(in_sender, sender.table.data(), message.data(), workers_);
        multiply(in_receiver, receiver.table.data(), message.data(), workers_);
    }

    // The possible entries of a separator are numbered, in the place of the ones.
    void reduce(separator& link) {
        double next = 0;
        for (double& entry : link.table)
            if (entry > 0) entry = next++;
        const std::span<const double> numbers = link.table.span();
        const auto size = static_cast<std::size_t>(next);
        reduce(link.in_parent, *link.parent, link.discrete_members(), numbers.data(), size);
        reduce(link.in_child, *link.child, link.discrete_members(), numbers.data(), size);
        tables_.push_back({&link.table, size});
    }

    void reduce(table_map& map, const clique& larger, std::span<node* const> smaller) {
        reduce(map, larger, smaller, nullptr, map.smaller_size());
    }
    // The map from the possible entries of a clique to a table over some of its nodes, whose entries have new numbers.
    void reduce(table_map& map, const clique& larger, std::span<node* const> smaller,
                const double* new_numbers, std::size_t smaller_size) {
        const number_array& ones = larger.table;
        const std::size_t entries = possible_in(ones);
        if (entries == ones.size()) return;
        table_map reduced = table_map::listed(entries, smaller_size, [&](const auto& list) {
            const auto take = [&](std::size_t entry, std::size_t at) {
                list(new_numbers == nullptr ? at : static_cast<std::size_t>(new_numbers[at]),
                     ones[entry] > 0);
            };
            if (map.loops() != nullptr) {
                loop_levels levels = make_levels(larger.discrete_members(), smaller);
                compress(levels);
                walk(levels, 0, 0, take);
            }
            map.with_list([&](auto positions) {
                for (std::size_t entry = 0; entry < positions.size(); ++entry) take(entry, positions[entry]);
            });
        });
        maps_.push_back({&map, std::move(reduced)});
    }

    junction_forest& forest_;
    workers workers_;
    std::vector<new_map> maps_;
    std::vector<new_size> tables_;
};

void restore_all(domain& compressed, junction_forest& forest, const workers& allowed) {
    const auto restore = [&](junction_tree& tree) {
        const tree_context in{forest, tree, allowed};
        restore_prior(in, policies::all);
        update_results(in, q_equilibrium_sum, q_mode_normal);
    };
    propagate_in_order(compressed, forest, std::ref(restore));
}

double bytes_of(const junction_forest& forest) noexcept {
    std::size_t bytes = 0;
    for (const auto& holder : forest.cliques) {
        bytes += holder->table.size() * sizeof(double);
        for (const assigned_table& assigned : holder->tables) bytes += assigned.in_clique.list_bytes();
    }
    for (const auto& link : forest.separators)
        bytes +=
            link->table.size() * sizeof(double) + link->in_parent.list_bytes() + link->in_child.list_bytes();
    for (const compiled_node& read : forest.nodes) bytes += read.in_best.list_bytes();
    return static_cast<double>(bytes);
}

}  // namespace

double compress(domain& compressed) {
    require(compressed.settings.excluded.empty() && compressed.counts.continuous == 0 &&
            compressed.counts.of_category(q_category_utility) == 0 && compressed.components.empty());
    junction_forest* const forest = forest_of(compressed);
    require(forest != nullptr, q_error_not_compiled);
    for (const auto& tree : forest->trees)
        require(tree->equilibrium != q_equilibrium_none, q_error_no_equilibrium);
    for (const auto& tree : forest->trees)
        std::ranges::for_each(tree->nodes, [](node* n) { validate_distributions(*n); });
    const double before = bytes_of(*forest);
    try {
        restore_all(compressed, *forest, compressed.workers);
        compression prepared(*forest, compressed.workers);
        prepared.prepare();
        prepared.commit();
        compressed.sampling.reset();
        restore_all(compressed, *forest, {});
    } catch (...) {
        for (const auto& tree : forest->trees) recover({*forest, *tree, {}});
        update_functions(compressed);
        throw;
    }
    return bytes_of(*forest) / before;
}

}  // namespace quarn
