#include "function_nodes.h"

#include <algorithm>
#include <new>
#include <unordered_map>

#include "errors.h"
#include "initial_tables.h"
#include "posterior_values.h"

namespace quarn {
namespace {

void select_in_table(node& function, std::size_t selected) {
    function.own_table->materialise();
    number_array& weights = function.own_table->data;
    bool changed = false;
    for (std::size_t state = 0; state < weights.size(); ++state) {
        const double weight = state == selected ? 1 : 0;
        changed |= weights[state] != weight;
        weights[state] = weight;
    }
    if (changed) function.table_changed();
}

bool is_computed(const node& asked) noexcept {
    return asked.is_function() && (!asked.is_discrete() || asked.model != nullptr);
}

// Of a node with a kind or a utility.
const junction_tree* tree_of(const node& asked, const junction_forest& forest) noexcept {
    return asked.has_kind() ? forest.of(asked).tree : forest.utilities[asked.vertex].tree;
}

// A search through what depends on what, depth first: each thing comes after those that it depends on.
class dependence_order {
public:
    dependence_order(domain& compiled, const junction_forest& forest) {
        for (const auto& tree : forest.trees) add({tree.get(), nullptr});
        for (node* function = compiled.oldest; function != nullptr; function = function->newer)
            if (function->is_function()) add({nullptr, function});
        for (std::size_t i = 0; i < steps_.size(); ++i)
            if (steps_[i].function != nullptr) list_dependences(forest, i);
        is_met_.resize(steps_.size());
    }

    std::vector<dependence_step> run() {
        ordered_.reserve(steps_.size());
        for (std::size_t i = 0; i < steps_.size(); ++i) append_from(i);
        return std::move(ordered_);
    }

private:
    void add(dependence_step added) {
        const void* const key = added.tree != nullptr ? static_cast<const void*>(added.tree) : added.function;
        index_of_[key] = steps_.size();
        steps_.push_back(added);
        before_.emplace_back();
    }

    void list_dependences(const junction_forest& forest, std::size_t index) {
        const node& function = *steps_[index].function;
        for (const node* parent : function.parents) {
            if (parent->is_real_function())
                before_[index].push_back(index_of_.at(parent));
            else if (!is_settled(*parent))
                before_[index].push_back(index_of_.at(tree_of(*parent, forest)));
        }
        if (function.is_discrete() && is_computed(function))
            before_[index_of_.at(forest.of(function).tree)].push_back(index);
    }

    void append_from(std::size_t start) {
        struct visit {
            std::size_t index;
            std::size_t next = 0;
        };
        std::vector<visit> open;
        const auto enter = [&](std::size_t index) {
            if (is_met_[index]) return;
            is_met_[index] = true;
            open.push_back({index});
        };
        enter(start);
        while (!open.empty()) {
            visit& last = open.back();
            if (last.next < before_[last.index].size()) {
                enter(before_[last.index][last.next++]);
            } else {
                ordered_.push_back(steps_[last.index]);
                open.pop_back();
            }
        }
    }

    std::vector<dependence_step> steps_;
    std::vector<std::vector<std::size_t>> before_;  // what each of them depends on
    std::unordered_map<const void*, std::size_t> index_of_;
    std::vector<bool> is_met_;
    std::vector<dependence_step> ordered_;
};

}  // namespace

const expression& chosen_expression(const node& function, const node_values& values) {
    require(function.model != nullptr, q_error_computation_failed);
    std::size_t configuration = 0;
    for (const node* model_node : function.model->nodes)
        configuration = configuration * model_node->state_count + values.state_of(*model_node);
    const owned_expression& chosen = function.model->expressions[configuration];
    require(chosen != nullptr, q_error_computation_failed);
    return *chosen;
}

void update_function(node& function) noexcept {
    function.value_failure = q_error_none;
    if (function.is_discrete() && function.model == nullptr) return;
    try {
        const posterior_values values;
        const expression& chosen = chosen_expression(function, values);
        if (function.is_discrete())
            select_in_table(function, evaluate_state(chosen, function, values));
        else
            function.value = evaluate_number(chosen, values);
    } catch (...) {
        function.value_failure = code_of_current_exception();
    }
}

q_error_t failed_function(const junction_tree& tree) noexcept {
    for (const node* member : tree.nodes)
        if (member->is_function() && member->model != nullptr && member->value_failure != q_error_none)
            return member->value_failure;
    for (const compiled_node* excluded : tree.excluded)
        if (excluded->owner->is_function() && excluded->owner->model != nullptr &&
            excluded->owner->value_failure != q_error_none)
            return excluded->owner->value_failure;
    return q_error_none;
}

std::vector<dependence_step> order_by_dependence(domain& compiled, const junction_forest& forest) {
    return dependence_order(compiled, forest).run();
}

void propagate_in_order(domain& compiled, junction_forest& forest,
                        const std::function<void(junction_tree&)>& propagate) {
    if (compiled.counts.functions() == 0) {
        for (const auto& tree : forest.trees) propagate(*tree);
        return;
    }
    q_error_t tree_failure = q_error_none, function_failure = q_error_none;
    for (const dependence_step& step : order_by_dependence(compiled, forest)) {
        if (step.function != nullptr) {
            update_function(*step.function);
            if (step.function->value_failure == q_error_no_memory) function_failure = q_error_no_memory;
        } else if (const q_error_t failed = failed_function(*step.tree); failed != q_error_none) {
            reset_tree({forest, *step.tree, {}});
            if (function_failure == q_error_none) function_failure = failed;
        } else if (tree_failure == q_error_none) {
            try {
                propagate(*step.tree);
            } catch (...) {
                tree_failure = code_of_current_exception();
            }
        }
    }
    require(tree_failure == q_error_none, tree_failure);
    require(function_failure == q_error_none, function_failure);
}

bool update_functions(domain& compiled) noexcept {
    if (compiled.counts.functions() == 0) return true;
    bool had_memory = true;
    try {
        for (const dependence_step& step : order_by_dependence(compiled, *forest_of(compiled))) {
            if (step.function == nullptr) continue;
            update_function(*step.function);
            had_memory &= step.function->value_failure != q_error_no_memory;
        }
    } catch (const std::bad_alloc&) {
        for (node* function = compiled.oldest; function != nullptr; function = function->newer)
            function->value_failure = q_error_no_memory;
        had_memory = false;
    }
    return had_memory;
}

}  // namespace quarn
