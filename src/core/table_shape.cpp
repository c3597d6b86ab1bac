// Changes of the shape of a table. With L the product of the state counts before a discrete node, n its own and R the
// product of those after it, a table is L runs of n slices of R entries, one slice for each state.
#include <algorithm>

#include "errors.h"
#include "node.h"
#include "table.h"

namespace quarn {
namespace {

struct runs {
    std::size_t count;   // L
    std::size_t states;  // n
    std::size_t slice;   // R
};

runs runs_of(const table& whole, std::size_t position) noexcept {
    const std::span<node* const> discrete(whole.nodes.begin(), whole.discrete_count);
    return {configurations(discrete.first(position)), discrete[position]->state_count,
            configurations(discrete.subspan(position + 1))};
}

std::size_t discrete_position(const table& whole, const node& member) noexcept {
    return std::min(whole.nodes.index_of(&member), whole.discrete_count);
}

// An array of `unit` numbers for each entry, in which each run has the states it had and then copies of its state 0.
number_array extended(const number_array& old, const runs& shape, std::size_t count, std::size_t unit) {
    const std::size_t slice = shape.slice * unit;
    number_array result(saturating_product(shape.count, saturating_product(count, slice)));
    const double* from = old.data();
    double* to = result.data();
    for (std::size_t run = 0; run < shape.count; ++run) {
        const double* const state_0 = from;
        to = std::copy_n(from, shape.states * slice, to);
        from += shape.states * slice;
        for (std::size_t added = shape.states; added < count; ++added) to = std::copy_n(state_0, slice, to);
    }
    return result;
}

// Keeps, in each run, `kept` states from `first` on, and gives back the memory of the others.
void keep_states(number_array& numbers, const runs& shape, std::size_t first, std::size_t kept,
                 std::size_t unit) noexcept {
    if (numbers.empty()) return;
    const std::size_t slice = shape.slice * unit;
    double* to = numbers.data();
    for (std::size_t run = 0; run < shape.count; ++run, to += kept * slice)
        if (const double* from = numbers.data() + (run * shape.states + first) * slice; from != to)
            std::copy_n(from, kept * slice, to);
    numbers.shrink(shape.count * kept * slice);
}

table same_but_numbers(const table& source) {
    table result(source.type, source.owner);
    result.nodes = source.nodes;
    result.discrete_count = source.discrete_count;
    result.size = source.size;
    result.roles = source.roles;
    return result;
}

void require_representable(const table& source, const table& result) {
    require(!source.is_materialised() || (result.size != largest_size && result.cg_size() != largest_size),
            q_error_no_memory);
}

table with_discrete_node(const table& source, node& added) {
    table result = same_but_numbers(source);
    result.nodes.insert(0, &added);
    ++result.discrete_count;
    result.size = saturating_product(added.state_count, source.size);
    require_representable(source, result);
    const runs whole{1, 1, source.size};
    if (source.is_materialised()) result.data = extended(source.data, whole, added.state_count, 1);
    if (!source.moments.empty())
        result.moments = extended(source.moments, whole, added.state_count, source.block_size());
    return result;
}

table with_continuous_node(const table& source, node& added, cg_role role) {
    table result = same_but_numbers(source);
    result.nodes.append(&added);
    result.roles.push_back(role);
    require_representable(source, result);
    if (!source.is_materialised()) return result;
    result.data = source.data.copy();
    result.moments = number_array(result.cg_size());
    const double* from = source.moments.data();
    double* to = result.moments.data();
    const std::size_t old_block = source.block_size();
    for (std::size_t block = 0; block < source.size; ++block, from += old_block) {
        to = std::copy_n(from, old_block, to);
        to = std::fill_n(to, result.block_size() - old_block, 0.0);
    }
    return result;
}

void remove_discrete_node(table& changed, std::size_t position, std::size_t kept_state) noexcept {
    const runs shape = runs_of(changed, position);
    keep_states(changed.data, shape, kept_state, 1, 1);
    keep_states(changed.moments, shape, kept_state, 1, changed.block_size());
    changed.nodes.erase(position);
    --changed.discrete_count;
    changed.size = configurations({changed.nodes.begin(), changed.discrete_count});
}

// Takes row and column k out of every block.
void remove_continuous_node(table& changed, std::size_t k) noexcept {
    const std::size_t rows = changed.continuous_count();
    double* to = changed.moments.data();
    for (std::size_t start = 0; start < changed.moments.size(); start += cg_block_size(rows)) {
        const double* const block = changed.moments.data() + start;
        for (std::size_t i = 0; i < rows; ++i) {
            if (i == k) continue;
            *to++ = block[cg_mean(i)];
            for (std::size_t j = 0; j <= i; ++j)
                if (j != k) *to++ = block[cg_covariance(i, j)];
        }
    }
    if (to != nullptr) changed.moments.shrink(static_cast<std::size_t>(to - changed.moments.data()));
    changed.nodes.erase(changed.discrete_count + k);
    changed.roles.erase(changed.roles.begin() + static_cast<std::ptrdiff_t>(k));
}

}  // namespace

table with_state_count(const table& source, const node& changed, std::size_t count) {
    const runs shape = runs_of(source, discrete_position(source, changed));
    table result = same_but_numbers(source);
    result.size = saturating_product(shape.count, saturating_product(count, shape.slice));
    require_representable(source, result);
    if (source.is_materialised()) result.data = extended(source.data, shape, count, 1);
    if (!source.moments.empty()) result.moments = extended(source.moments, shape, count, source.block_size());
    return result;
}

table with_node(const table& source, node& added, cg_role role) {
    return added.is_discrete() ? with_discrete_node(source, added)
                               : with_continuous_node(source, added, role);
}

void commit(table& target, table&& prepared) noexcept {
    target.nodes.swap(prepared.nodes);
    target.discrete_count = prepared.discrete_count;
    target.size = prepared.size;
    target.data.swap(prepared.data);
    target.moments.swap(prepared.moments);
    target.roles.swap(prepared.roles);
}

void drop_states(table& changed, const node& shrunk, std::size_t count) noexcept {
    const std::size_t position = discrete_position(changed, shrunk);
    if (position == changed.discrete_count) return;
    const runs shape = runs_of(changed, position);
    keep_states(changed.data, shape, 0, count, 1);
    keep_states(changed.moments, shape, 0, count, changed.block_size());
    changed.size = saturating_product(shape.count, saturating_product(count, shape.slice));
}

void remove_node(table& changed, const node& removed, std::size_t kept_state) noexcept {
    const std::size_t position = changed.nodes.index_of(&removed);
    if (position < changed.discrete_count)
        remove_discrete_node(changed, position, kept_state);
    else if (position < changed.nodes.size())
        remove_continuous_node(changed, position - changed.discrete_count);
}

void permute_states(table& changed, const node& permuted, std::span<const std::size_t> position_of,
                    std::span<double> scratch) noexcept {
    const std::size_t position = discrete_position(changed, permuted);
    if (position == changed.discrete_count) return;
    const runs shape = runs_of(changed, position);
    const auto permute = [&](number_array& numbers, std::size_t unit) {
        if (numbers.empty()) return;
        const std::size_t slice = shape.slice * unit;
        for (std::size_t run = 0; run < shape.count; ++run)
            for (std::size_t offset = 0; offset < slice; ++offset) {
                double* const first = numbers.data() + run * shape.states * slice + offset;
                for (std::size_t state = 0; state < shape.states; ++state)
                    scratch[position_of[state]] = first[state * slice];
                for (std::size_t state = 0; state < shape.states; ++state)
                    first[state * slice] = scratch[state];
            }
    };
    permute(changed.data, 1);
    permute(changed.moments, changed.block_size());
}

void replace_node(table& changed, const node& old_node, node& new_node) noexcept {
    const std::size_t position = changed.nodes.index_of(&old_node);
    if (position < changed.nodes.size()) changed.nodes.replace(position, &new_node);
}

}  // namespace quarn
