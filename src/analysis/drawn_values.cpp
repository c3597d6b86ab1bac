#include "drawn_values.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "errors.h"
#include "function_nodes.h"
#include "numeric_moments.h"

namespace quarn {
namespace {

class drawn_values final : public node_values {
public:
    void set(const node& function, double value) { functions_[&function] = value; }

    value value_of(const node& referred) const override {
        if (referred.is_real_function()) return functions_.at(&referred);
        if (referred.is_utility()) return drawn_utility(referred);
        if (referred.is_continuous()) return referred.sampled_value;
        return value_in_state(referred, drawn_state(referred));
    }
    std::size_t state_of(const node& discrete) const override { return drawn_state(discrete); }
    double variance_of(const node& numeric) const override {
        return numeric.is_discrete() ? numeric_moments(numeric, beliefs_in_drawn(numeric)).variance : 0;
    }
    double quantile_of(const node& numeric, double level) const override {
        return numeric.is_discrete() ? numeric_quantile(numeric, beliefs_in_drawn(numeric), level)
                                     : std::get<double>(value_of(numeric));
    }
    double probability_of(const expression& condition) const override {
        return evaluate_boolean(condition, *this) ? 1 : 0;
    }

private:
    static std::vector<double> beliefs_in_drawn(const node& discrete) {
        std::vector<double> beliefs(discrete.state_count, 0.0);
        beliefs[drawn_state(discrete)] = 1;
        return beliefs;
    }

    std::unordered_map<const node*, double> functions_;  // those that others depend on
};

double evaluate_function(const node& function, const drawn_values& values) {
    return evaluate_number(chosen_expression(function, values), values);
}

// The real-valued functions that a function depends on, each after those that it depends on itself; last the function.
std::vector<const node*> functions_up_to(const node& function) {
    struct visit {
        const node* visited;
        std::size_t next_parent = 0;
    };
    std::vector<const node*> ordered;
    std::unordered_set<const node*> met{&function};
    std::vector<visit> open{{&function}};
    while (!open.empty()) {
        visit& last = open.back();
        if (last.next_parent == last.visited->parents.size()) {
            ordered.push_back(last.visited);
            open.pop_back();
            continue;
        }
        const node* const parent = last.visited->parents[last.next_parent++];
        if (parent->is_real_function() && met.insert(parent).second) open.push_back({parent});
    }
    return ordered;
}

double value_of_function(const node& function) {
    drawn_values values;
    if (std::ranges::none_of(function.parents, [](const node* n) { return n->is_real_function(); }))
        return evaluate_function(function, values);
    for (const node* next : functions_up_to(function)) values.set(*next, evaluate_function(*next, values));
    return std::get<double>(values.value_of(function));
}

}  // namespace

std::size_t drawn_state(const node& discrete) {
    require(discrete.is_discrete() && discrete.domain->configuration_is_drawn);
    return static_cast<std::size_t>(discrete.sampled_state);
}

double drawn_utility(const node& utility) {
    require(utility.is_utility() && utility.domain->configuration_is_drawn);
    if (utility.own_table == nullptr || !utility.own_table->is_materialised()) return 0;
    std::size_t configuration = 0;
    for (const node* parent : utility.own_table->nodes)
        configuration = configuration * parent->state_count + drawn_state(*parent);
    return utility.own_table->data[configuration];
}

double drawn_value(const node& asked) {
    require((asked.is_continuous() || asked.is_real_function()) && asked.domain->configuration_is_drawn);
    return asked.is_continuous() ? asked.sampled_value : value_of_function(asked);
}

}  // namespace quarn
