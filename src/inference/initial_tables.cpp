#include "initial_tables.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "chain_normalizer.h"
#include "errors.h"
#include "evidence.h"
#include "log_weights.h"
#include "message_passing.h"
#include "moments.h"
#include "table_slices.h"
#include "table_validation.h"

namespace quarn {
namespace {

constexpr std::size_t most_saved_numbers = (std::size_t{256} << 20) / sizeof(double);

// An excluded decision has always been made.
bool leaves_out(const junction_forest& forest, const node& owner, policies taken) noexcept {
    if (!owner.is(q_category_decision)) return false;
    if (owner.vertex >= forest.vertex_count || taken == policies::none) return true;
    return taken == policies::of_open_decisions && owner.evidence.index != findings::none;
}

// Goes through everything that a saved copy holds, in order.
template <class Visit>
void for_each_array(junction_tree& tree, const Visit& visit) {
    for (clique* holder : tree.cliques) {
        visit(holder->weights());
        visit(holder->utilities.span());
        if (holder->cg_table != nullptr) visit(holder->cg_table->moments.span());
        visit(std::span(&holder->smallest_entry, 1));
    }
    for (separator* link : tree.separators) {
        visit(link->table.span());
        visit(link->utilities.span());
    }
}

template <class Visit>
void for_each_role(junction_tree& tree, const Visit& visit) {
    for (clique* holder : tree.cliques)
        if (holder->cg_table != nullptr) std::ranges::for_each(holder->cg_table->roles, visit);
}

std::size_t numbers_in(junction_tree& tree) noexcept {
    std::size_t total = 0;
    for_each_array(tree, [&](std::span<double> array) { total += array.size(); });
    return total;
}

// All distributions sum to 1, and so does their product but for the decisions that have none. What excluded nodes leave of
// it has to be worked out: NaN.
double known_prior(const tree_context& in) noexcept {
    if (!in.forest.excluded().empty()) return std::numeric_limits<double>::quiet_NaN();
    double prior = 1;
    for (const node* member : in.tree.nodes)
        if (in.forest.of(*member).policy_is_left_out) prior *= static_cast<double>(member->state_count);
    return prior;
}

void clear_tables(junction_tree& tree, number_scale scale) noexcept {
    const double one = scale == number_scale::linear ? 1 : 0;
    for (clique* cleared : tree.cliques) {
        std::ranges::fill(cleared->weights(), one);
        std::ranges::fill(cleared->utilities, 0.0);
        cleared->smallest_entry = 1;
        if (cleared->cg_table == nullptr) continue;
        std::ranges::fill(cleared->cg_table->moments, 0.0);
        std::ranges::fill(cleared->cg_table->roles, cg_role::unknown);
    }
    for (separator* cleared : tree.separators) {
        std::ranges::fill(cleared->table, one);
        std::ranges::fill(cleared->utilities, 0.0);
    }
}

void validate_tables(const tree_context& in) {
    for (node* member : in.tree.nodes) validate_distributions(*member);
    for (const compiled_node* excluded : in.tree.excluded) validate_distributions(*excluded->owner);
    for (clique* home : in.tree.cliques) {
        for (const assigned_table& assigned : home->tables)
            if (assigned.owner == nullptr && !assigned.holds_logarithms) validate_potential(*assigned.whole);
        for (const assigned_table& assigned : home->utility_tables) validate_utilities(*assigned.owner);
    }
    for (compiled_component& component : in.forest.components)
        if (component.tree == &in.tree) update_normalizer(component, in.workers);
}

// Numbers of any size, their largest counted apart.
void multiply_scaled_into(const tree_context& in, clique& home, const assigned_table& assigned) {
    const table& numbers = assigned.numbers();
    const double largest = *std::ranges::max_element(numbers.data);
    require(assigned.holds_logarithms || largest > 0, q_error_inconsistency_or_underflow);
    number_array factors(numbers.size);
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const double number = numbers.data[i];
        factors[i] = assigned.holds_logarithms ? std::exp(number - largest) : number / largest;
        if (factors[i] < smallest_exact && (assigned.holds_logarithms || number > 0))
            in.tree.is_extensible = false;
    }
    count_logarithm(in.tree, assigned.holds_logarithms ? largest : std::log(largest));
    multiply_into(in, home, assigned.in_clique, factors.span());
}

void take_chain_table(const tree_context& in, clique& home, assigned_table& assigned, number_scale scale) {
    update_slice(in.forest, assigned);
    const std::span<const double> numbers = assigned.numbers().data.span();
    if (scale == number_scale::linear)
        multiply_scaled_into(in, home, assigned);
    else if (assigned.holds_logarithms)
        add(assigned.in_clique, home.weights().data(), numbers.data(), in.workers);
    else
        add_logarithms(in, home, assigned.in_clique, numbers);
}

void take_table(const tree_context& in, clique& home, assigned_table& assigned, policies taken,
                number_scale scale) {
    if (assigned.owner == nullptr) return take_chain_table(in, home, assigned, scale);
    node& owner = *assigned.owner;
    compiled_node& compiled = in.forest.of(owner);
    update_slice(in.forest, assigned);
    compiled.policy_is_left_out = leaves_out(in.forest, owner, taken);
    if (compiled.policy_is_left_out) return;
    const table& numbers = assigned.numbers();
    if (numbers.continuous_count() > 0)
        combine_moments(in, home, assigned);
    else if (scale == number_scale::logarithmic)
        add_logarithms(in, home, assigned.in_clique, numbers.data.span());
    else
        multiply_into(in, home, assigned.in_clique, numbers.data.span());
}

void take_utilities(const tree_context& in, clique& home, assigned_table& assigned) {
    update_slice(in.forest, assigned);
    add(*assigned.in_clique.loops(), home.utilities.data(), assigned.numbers().data.data(), in.workers);
}

}  // namespace

void reset_tree(const tree_context& in) noexcept {
    in.tree.equilibrium = q_equilibrium_none;
    in.tree.mode = q_mode_normal;
    in.tree.is_extensible = true;
    in.tree.normalization = 1;
    in.tree.log_normalization = 0;
    for (node* member : in.tree.nodes) {
        compiled_node& reset = in.forest.of(*member);
        reset.propagated_index = findings::none;
        reset.value_is_propagated = false;
        std::ranges::fill(in.forest.states_of(reset, in.forest.propagated_weights), 1.0);
    }
    for (compiled_node* excluded : in.tree.excluded) {
        excluded->propagated_index = excluded->owner->evidence.index;
        const std::span<double> weights = in.forest.states_of(*excluded, in.forest.propagated_weights);
        for (std::size_t state = 0; state < weights.size(); ++state)
            weights[state] = excluded->owner->evidence.weight(state);
    }
    update_evidence_flags(in.forest, in.tree);
    count_changed_evidence(in.forest, in.tree);
}

void fill_tables(const tree_context& in, policies taken, number_scale scale) {
    validate_tables(in);
    in.tree.saved.reset();
    clear_tables(in.tree, scale);
    for (clique* home : in.tree.cliques) {
        for (assigned_table& assigned : home->tables) take_table(in, *home, assigned, taken, scale);
        for (assigned_table& assigned : home->utility_tables) take_utilities(in, *home, assigned);
    }
    for (compiled_node* excluded : in.tree.excluded) {
        if (excluded->home != nullptr) continue;
        const double number = remaining_number(in.forest, *excluded);
        if (leaves_out(in.forest, *excluded->owner, taken)) continue;
        require_exact(number);
        count_in(in.tree, number);
    }
    for (const compiled_component& component : in.forest.components)
        if (component.tree == &in.tree) count_logarithm(in.tree, component.log_factor);
    collect_moments(in);
    in.tree.prior_normalization = known_prior(in);
    in.tree.prior_log_normalization = std::log(in.tree.prior_normalization);
    in.tree.tables_changed = false;
}

void calibrate(const tree_context& in) {
    for (clique* holder : in.tree.cliques) holder->is_active = true;
    pass_messages(in, q_equilibrium_sum, q_mode_normal, in.tree.root);
    in.tree.equilibrium = q_equilibrium_sum;
    if (!std::isfinite(in.tree.normalization)) in.tree.normalization = std::exp(in.tree.log_normalization);
    in.tree.prior_excess = in.tree.log_normalization - in.tree.prior_log_normalization;
    forget_rounding(in.tree);
    in.tree.prior_normalization = in.tree.normalization;
    in.tree.prior_log_normalization = in.tree.log_normalization;
}

void forget_rounding(junction_tree& tree) noexcept {
    if (std::isnan(tree.prior_normalization)) return;
    tree.normalization = tree.prior_normalization;
    tree.log_normalization = tree.prior_log_normalization;
}

bool copy_is_current(const tree_context& in, policies taken) noexcept {
    return in.tree.saved != nullptr && !in.tree.tables_changed && !has_stale_slice(in.forest, in.tree) &&
           std::ranges::all_of(in.tree.nodes, [&](const node* member) {
               return in.forest.of(*member).policy_is_left_out == leaves_out(in.forest, *member, taken);
           });
}

void restore_tables(const tree_context& in) noexcept {
    const double* numbers = in.tree.saved->numbers.data();
    for_each_array(in.tree, [&](std::span<double> array) {
        std::copy_n(numbers, array.size(), array.begin());
        numbers += array.size();
    });
    auto role = in.tree.saved->roles.begin();
    for_each_role(in.tree, [&](cg_role& restored) { restored = *role++; });
    in.tree.equilibrium = q_equilibrium_sum;
    forget_rounding(in.tree);
}

bool may_save_tables(junction_forest& forest) noexcept {
    if (forest.table_numbers == 0)
        for (const auto& tree : forest.trees) forest.table_numbers += numbers_in(*tree);
    return forest.table_numbers < most_saved_numbers;
}

void save_tables(const tree_context& in) noexcept {
    try {
        if (in.tree.saved == nullptr) {
            auto saved = std::make_unique<saved_tables>();
            saved->numbers = number_array(numbers_in(in.tree));
            for_each_role(in.tree, [&](cg_role role) { saved->roles.push_back(role); });
            in.tree.saved = std::move(saved);
        }
    } catch (const std::bad_alloc&) {  // the tables can be worked out again
        return;
    }
    double* numbers = in.tree.saved->numbers.data();
    for_each_array(in.tree,
                   [&](std::span<double> array) { numbers = std::ranges::copy(array, numbers).out; });
    auto role = in.tree.saved->roles.begin();
    for_each_role(in.tree, [&](cg_role saved) { *role++ = saved; });
}

namespace {

// Tables of chain components may hold numbers that nearly vanish but are decisive.
bool is_restored_exactly(const tree_context& in, policies taken) {
    try {
        fill_tables(in, taken);
        calibrate(in);
    } catch (const failure&) {
        if (!in.tree.has_chain_tables || in.tree.is_extensible) throw;
    }
    return !in.tree.has_chain_tables || in.tree.is_extensible;
}

}  // namespace

void restore_prior(const tree_context& in, policies taken) {
    const bool is_current = copy_is_current(in, taken);
    reset_tree(in);
    if (is_current) return restore_tables(in);
    if (!is_restored_exactly(in, taken)) {
        reset_tree(in);
        fill_tables(in, taken, number_scale::logarithmic);
        log_weights(in).restore();
        calibrate(in);
    }
    if (in.tree.is_extensible && may_save_tables(in.forest)) save_tables(in);
}

}  // namespace quarn
