#include "results.h"

#include <cmath>

#include "errors.h"
#include "evidence.h"

namespace quarn {
namespace {

const junction_forest& propagated_forest(const domain& asked) {
    const junction_forest* forest = forest_of(asked);
    require(forest != nullptr, q_error_not_compiled);
    for (const auto& tree : forest->trees)
        require(tree->equilibrium != q_equilibrium_none, q_error_no_equilibrium);
    return *forest;
}

}  // namespace

double belief(const node& asked, std::size_t state) {
    require_state(asked, state);
    const std::size_t first = propagated_node(asked).first_belief;
    return forest_of(*asked.domain)->beliefs[first + state];
}

double normalization_constant(const domain& asked) {
    double product = 1;
    for (const auto& tree : propagated_forest(asked).trees) product *= tree->normalization;
    return std::isnormal(product) ? product : std::exp(log_normalization_constant(asked));
}

double log_normalization_constant(const domain& asked) {
    double sum = 0;
    for (const auto& tree : propagated_forest(asked).trees) sum += tree->log_normalization;
    return sum;
}

}  // namespace quarn
