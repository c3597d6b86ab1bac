#include "simulation.h"

#include <algorithm>

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

sampler& prepared_sampler(domain& sampled, junction_forest* forest) {
    if (sampled.sampling == nullptr)
        sampled.sampling = forest != nullptr ? new_tree_sampler(*forest) : new_forward_sampler(sampled);
    return static_cast<sampler&>(*sampled.sampling);
}

}  // namespace

void simulate(domain& sampled) {
    sampled.configuration_is_drawn = false;
    junction_forest* const forest = forest_of(sampled);
    if (forest != nullptr) require_posteriors(sampled, *forest);
    sampler& prepared = prepared_sampler(sampled, forest);
    random_generator generator = sampled.random;
    sampled.drawn_log_probability = prepared.draw(generator);
    for (const drawn_node& drawn : prepared.drawn()) {
        drawn.owner->sampled_state = static_cast<int64_t>(drawn.state);
        drawn.owner->sampled_value = drawn.value;
    }
    sampled.random = generator;
    sampled.configuration_is_drawn = true;
}

}  // namespace quarn
