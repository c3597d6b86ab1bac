// Drawing from the tables of calibrated junction trees.
//
//   Maps     tables at sum equilibrium -> a configuration of all nodes, with the probability of its states
//   Cost     for the root of a tree, and each clique below it, the entries that agree with what was drawn, of which half at
//            most are looked at; the root in blocks, so that it costs the square root of its size or little more. Sums over
//            the blocks are taken once for each propagation
//   Method   an entry of the root, then of each clique given its separator to the parent; its probability is the product of
//            the entries chosen, each divided by the number of the separator. Continuous nodes one after the other from
//            their distribution given those before
#include "tree_sampling.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "errors.h"
#include "kernels.h"
#include "projection.h"
#include "two_ended_choice.h"
#include "value_sampling.h"

namespace quarn {
namespace {

// Draws an entry of the root of a tree.
class root_sampler {
public:
    std::size_t draw(clique& root, random_generator& generator) {
        const std::span<const double> weights = root.weights();
        if (results_count_ != root.tree->results_count) add_up(weights, root.tree->results_count);
        if (sums_.size() == 1) return choose(weights, total_, generator);
        const std::size_t block = choose(sums_, total_, generator);
        const auto chosen = weights.subspan(block * block_length,
                                            std::min(block_length, weights.size() - block * block_length));
        return block * block_length + choose(chosen, sums_[block], generator);
    }
    double total() const noexcept { return total_; }

private:
    static constexpr std::size_t block_length = 1024;

    void add_up(std::span<const double> weights, uint64_t results_count) {
        sums_.clear();
        for (std::size_t first = 0; first < weights.size(); first += block_length)
            sums_.push_back(sum_of(weights.data() + first, std::min(block_length, weights.size() - first)));
        total_ = sum_of(sums_.data(), sums_.size());
        results_count_ = results_count;
    }

    uint64_t results_count_ = 0;  // none has been computed for 0
    std::vector<double> sums_;    // over blocks of entries
    double total_ = 0;
};

class tree_sampler final : public sampler {
public:
    explicit tree_sampler(junction_forest& forest) : forest_(forest) {
        for (compiled_node& member : forest.nodes) drawn_.push_back({member.owner});
        std::vector<std::size_t> step_of(forest.cliques.size() + 1);  // by the numbers of the cliques
        for (const auto& tree : forest.trees)
            for (clique* added : tree->cliques) {
                step_of[added->number] = steps_.size();
                steps_.push_back(added->to_parent == nullptr
                                     ? clique_step(*added)
                                     : clique_step(*added, step_of[added->to_parent->parent->number]));
            }
        for (compiled_node& read : forest.nodes)
            if (read.best != nullptr && read.owner->is_discrete())
                readings_.push_back(
                    {read.owner->vertex, step_of[read.best->number],
                     projection(read.in_best, read.best->discrete_members(), {&read.owner, 1})});
    }

    double draw(random_generator& generator) override {
        log_product probability;
        for (clique_step& drawing : steps_) {
            draw_entry(drawing, generator, probability);
            if (drawing.drawn->cg_table != nullptr) draw_values(drawing, generator);
        }
        for (const reading& read : readings_)
            drawn_[read.vertex].state = read.state_of_entry(steps_[read.step].entry);
        for (const compiled_node& excluded : forest_.excluded())
            drawn_[excluded.owner->vertex].state = static_cast<std::size_t>(excluded.propagated_index);
        return probability.value();
    }

private:
    struct clique_step {
        explicit clique_step(clique& root) : drawn(&root), as_root(std::in_place) {}
        clique_step(clique& below, std::size_t step_of_parent)
            : drawn(&below),
              parent(step_of_parent),
              in_separator(projection(below.to_parent->in_parent, below.to_parent->parent->discrete_members(),
                                      below.to_parent->discrete_members())),
              entries(below.to_parent->in_child, below.discrete_members(),
                      below.to_parent->discrete_members()) {}

        clique* drawn;
        std::optional<root_sampler> as_root;
        std::size_t parent = 0;                  // of a clique below the root
        std::optional<projection> in_separator;  // of an entry of the parent
        preimages entries;
        std::size_t entry = 0;  // what was drawn
    };
    // Where the state of a node is read.
    struct reading {
        std::size_t vertex;
        std::size_t step;
        projection state_of_entry;
    };

    void draw_entry(clique_step& drawing, random_generator& generator, log_product& probability) {
        const double* const weights = drawing.drawn->weights().data();
        double total = 0;
        if (drawing.as_root) {
            drawing.entry = drawing.as_root->draw(*drawing.drawn, generator);
            total = drawing.as_root->total();
        } else {
            const std::size_t shared = (*drawing.in_separator)(steps_[drawing.parent].entry);
            total = drawing.drawn->to_parent->table[shared];
            drawing.entry = drawing.entries.choose(weights, shared, total, generator);
        }
        probability.multiply(weights[drawing.entry] / total);
    }

    void draw_values(const clique_step& drawing, random_generator& generator) {
        const table& from = *drawing.drawn->cg_table;
        const std::span<node* const> members(from.nodes.begin() + from.discrete_count,
                                             from.continuous_count());
        values_.clear();
        for (const node* member : members) values_.push_back(value_of(*member));
        continuous_.draw(from, drawing.entry, values_, generator);
        for (std::size_t k = 0; k < members.size(); ++k) drawn_[members[k]->vertex].value = values_[k];
    }

    // Observed, or drawn in a clique above.
    double value_of(const node& continuous) const noexcept {
        const compiled_node& known = forest_.of(continuous);
        return known.value_is_propagated ? known.propagated_value : drawn_[continuous.vertex].value;
    }

    junction_forest& forest_;
    std::vector<clique_step> steps_;  // parents before their children
    std::vector<reading> readings_;
    value_sampler continuous_;
    std::vector<double> values_;
};

}  // namespace

std::unique_ptr<sampler> new_tree_sampler(junction_forest& forest) {
    return std::make_unique<tree_sampler>(forest);
}

}  // namespace quarn
