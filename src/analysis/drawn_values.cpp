#include "drawn_values.h"

#include <unordered_set>

#include "errors.h"
#include "evaluation.h"
#include "function_nodes.h"
#include "numeric_moments.h"

namespace quarn {
namespace {

std::size_t state_in_draw(const node& discrete) noexcept {
    return static_cast<std::size_t>(discrete.sampled_state);
}

double value_of_function(const node& function) {
    require(function.sampled_failure == q_error_none, function.sampled_failure);
    return function.sampled_value;
}

class drawn_values final : public node_values {
public:
    value value_of(const node& referred) const override {
        if (referred.is_real_function()) return value_of_function(referred);
        if (!referred.is_discrete()) return referred.sampled_value;
        return value_in_state(referred, state_in_draw(referred));
    }
    std::size_t state_of(const node& discrete) const override { return state_in_draw(discrete); }
    double variance_of(const node& numeric) const override {
        if (numeric.is_discrete()) return numeric_moments(numeric, beliefs_in_draw(numeric)).variance;
        (void)value_of(numeric);
        return 0;
    }
    double quantile_of(const node& numeric, double level) const override {
        return numeric.is_discrete() ? numeric_quantile(numeric, beliefs_in_draw(numeric), level)
                                     : std::get<double>(value_of(numeric));
    }
    double probability_of(const expression& condition) const override {
        return evaluate_boolean(condition, *this) ? 1 : 0;
    }

private:
    static std::vector<double> beliefs_in_draw(const node& discrete) {
        std::vector<double> beliefs(discrete.state_count, 0.0);
        beliefs[state_in_draw(discrete)] = 1;
        return beliefs;
    }
};

}  // namespace

std::vector<node*> functions_in_order(const domain& asked) {
    struct visit {
        node* visited;
        std::size_t next_parent = 0;
    };
    std::vector<node*> ordered;
    std::unordered_set<const node*> met;
    std::vector<visit> open;
    const auto enter = [&](node& entered) {
        if (entered.is_real_function() && met.insert(&entered).second) open.push_back({&entered});
    };
    for (node* start = asked.oldest; start != nullptr; start = start->newer) {
        enter(*start);
        while (!open.empty()) {
            visit& last = open.back();
            if (last.next_parent < last.visited->parents.size()) {
                enter(*last.visited->parents[last.next_parent++]);
            } else {
                ordered.push_back(last.visited);
                open.pop_back();
            }
        }
    }
    return ordered;
}

void set_drawn_utility(node& utility) noexcept {
    utility.sampled_value = 0;
    if (utility.own_table == nullptr || !utility.own_table->is_materialised()) return;
    std::size_t configuration = 0;
    for (const node* parent : utility.own_table->nodes)
        configuration = configuration * parent->state_count + state_in_draw(*parent);
    utility.sampled_value = utility.own_table->data[configuration];
}

void set_drawn_value(node& function) noexcept {
    function.sampled_failure = q_error_none;
    try {
        const drawn_values values;
        function.sampled_value = evaluate_number(chosen_expression(function, values), values);
    } catch (...) {
        function.sampled_failure = code_of_current_exception();
    }
}

std::size_t drawn_state(const node& discrete) {
    require(discrete.is_discrete() && discrete.domain->configuration_is_drawn);
    return state_in_draw(discrete);
}

double drawn_utility(const node& utility) {
    require(utility.is_utility() && utility.domain->configuration_is_drawn);
    return utility.sampled_value;
}

double drawn_value(const node& asked) {
    require((asked.is_continuous() || asked.is_real_function()) && asked.domain->configuration_is_drawn);
    return asked.is_continuous() ? asked.sampled_value : value_of_function(asked);
}

}  // namespace quarn
