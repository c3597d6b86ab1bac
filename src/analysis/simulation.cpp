#include "simulation.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "drawn_values.h"
#include "errors.h"
#include "forward_sampling.h"
#include "propagation_state.h"
#include "tree_sampling.h"

namespace quarn {
namespace {

void require_posteriors(const domain& compiled, const junction_forest& forest) {
    for (const auto& tree : forest.trees)
        require(tree->equilibrium != q_equilibrium_none, q_error_no_equilibrium);
    for (const auto& tree : forest.trees)
        require(tree->equilibrium == q_equilibrium_sum &&
                (tree->mode == q_mode_normal || !tree->evidence_is_propagated));
    require(!has_evidence_to_propagate(compiled));
}

struct prepared_sampling final : sampling_plan {
    std::unique_ptr<sampler> with_kind;
    std::vector<node*> utilities;
    std::vector<node*> functions;  // real-valued ones, in the order in which they can be computed
};

prepared_sampling& prepare(domain& sampled, junction_forest* forest) {
    if (sampled.sampling == nullptr) {
        auto made = std::make_unique<prepared_sampling>();
        made->with_kind = forest != nullptr ? new_tree_sampler(*forest) : new_forward_sampler(sampled);
        for (node* next = sampled.oldest; next != nullptr; next = next->newer)
            if (next->is_utility()) made->utilities.push_back(next);
        made->functions = functions_in_order(sampled);
        sampled.sampling = std::move(made);
    }
    return static_cast<prepared_sampling&>(*sampled.sampling);
}

void take_over(const std::vector<drawn_node>& all_drawn) {
    for (const drawn_node& drawn : all_drawn) {
        require(std::isfinite(drawn.value), q_error_computation_failed);
        drawn.owner->sampled_state = static_cast<int64_t>(drawn.state);
        drawn.owner->sampled_value = drawn.value;
    }
}

}  // namespace

void simulate(domain& sampled) {
    sampled.configuration_is_drawn = false;
    junction_forest* const forest = forest_of(sampled);
    if (forest != nullptr) require_posteriors(sampled, *forest);
    prepared_sampling& prepared = prepare(sampled, forest);
    random_generator generator = sampled.random;
    const double log_probability = prepared.with_kind->draw(generator);
    take_over(prepared.with_kind->drawn());
    std::ranges::for_each(prepared.utilities, [](node* utility) { set_drawn_utility(*utility); });
    for (node* function : prepared.functions) {
        set_drawn_value(*function);
        require(function->sampled_failure != q_error_no_memory, q_error_no_memory);
    }
    sampled.random = generator;
    sampled.drawn_log_probability = log_probability;
    sampled.configuration_is_drawn = true;
}

}  // namespace quarn
