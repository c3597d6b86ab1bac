#include "cg_plan.h"

namespace quarn {

cg_plan make_cg_plan(const table& larger, const table& smaller) {
    cg_plan plan;
    plan.loops = by_section(make_levels({larger.nodes.begin(), larger.discrete_count},
                                        {smaller.nodes.begin(), smaller.discrete_count}));
    for (std::size_t i = smaller.discrete_count; i < smaller.nodes.size(); ++i)
        plan.positions.push_back(larger.continuous_position(smaller.nodes[i]));
    return plan;
}

}  // namespace quarn
