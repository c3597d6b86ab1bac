#include "states.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <unordered_map>

#include "errors.h"
#include "family_tables.h"

namespace quarn {
namespace {

constexpr double infinite = std::numeric_limits<double>::max();

// New states have no label; the bound above the last state stays the last one.
void resize_state_arrays(node& changed, std::size_t count) {
    if (!changed.state_labels.empty()) changed.state_labels.resize(count);
    if (changed.state_values.empty()) return;
    const double last = changed.state_values.back();
    changed.state_values.resize(count);
    std::fill(changed.state_values.begin() +
                  static_cast<std::ptrdiff_t>(std::min(count, changed.state_count)),
              changed.state_values.end(), -1.0);
    changed.state_values.push_back(last);
}

void fit_evidence(findings& evidence, std::size_t count) noexcept {
    if (evidence.index == findings::general || evidence.index >= static_cast<int64_t>(count))
        evidence.index = findings::none;
    evidence.weights.clear();
}

void add_states(node& changed, std::size_t count) {
    std::vector<prepared_states> models;
    for_each_model_over(changed, [&](model& affected) { models.emplace_back(affected, changed, count); });
    prepared_tables tables;
    for_each_family_table(changed, [&](table& affected) {
        if (affected.nodes.contains(&changed))
            tables.add(affected, with_state_count(affected, changed, count));
    });
    if (!changed.state_labels.empty()) changed.state_labels.reserve(count);
    if (!changed.state_values.empty()) changed.state_values.reserve(count + 1);

    for (prepared_states& prepared : models) prepared.commit();
    tables.commit();
    resize_state_arrays(changed, count);
}

void remove_states(node& changed, std::size_t count) noexcept {
    for_each_family_table(changed, [&](table& affected) { drop_states(affected, changed, count); });
    for_each_model_over(changed, [&](model& affected) { drop_states(affected, changed, count); });
    resize_state_arrays(changed, count);
}

}  // namespace

void set_subtype(node& changed, q_subtype_t subtype) {
    require(changed.is_discrete());
    require(subtype >= q_subtype_label && subtype <= q_subtype_interval);
    require(subtype != q_subtype_boolean || changed.state_count == 2);
    changed.subtype = subtype;
}

void set_state_count(node& changed, std::size_t count) {
    require(changed.is_discrete() && count >= 1 && count <= std::numeric_limits<int64_t>::max());
    if (count == changed.state_count) return;
    require(changed.subtype != q_subtype_boolean);
    if (count > changed.state_count)
        add_states(changed, count);
    else
        remove_states(changed, count);
    changed.state_count = count;
    fit_evidence(changed.evidence, count);
    family_tables_changed(changed);
    changed.domain->structure_changed();
}

const char* state_label(const node& labelled, std::size_t state) noexcept {
    if (!labelled.state_labels.empty() && labelled.state_labels[state])
        return labelled.state_labels[state].get();
    if (labelled.subtype == q_subtype_boolean) return state == 0 ? "false" : "true";
    return "";
}

void set_state_label(node& labelled, std::size_t state, const char* label) {
    require(labelled.is_discrete() && state < labelled.state_count);
    std::vector<text>& labels = labelled.state_labels;
    if (!labels.empty() && labels[state] && std::strcmp(labels[state].get(), label) == 0) return;
    text copy = duplicate_string(label);
    if (labels.empty()) labels.resize(labelled.state_count);
    labels[state] = std::move(copy);
}

void set_state_value(node& changed, std::size_t index, double value) {
    const bool interval = changed.subtype == q_subtype_interval;
    require(changed.has_values() && index < changed.state_count + (interval ? 1 : 0));
    std::vector<double>& values = changed.state_values;
    if (values.empty()) {
        values.assign(changed.state_count + 1, -1.0);
        if (interval) {
            values.front() = -infinite;
            values.back() = infinite;
        }
    }
    values[index] = value;
}

double state_value(const node& asked, std::size_t index) {
    const bool interval = asked.subtype == q_subtype_interval;
    require(asked.has_values() && index < asked.state_count + (interval ? 1 : 0));
    require(!asked.state_values.empty());
    return asked.state_values[index];
}

int64_t state_from_label(const node& asked, const char* label) noexcept {
    if (*label == '\0') return -1;
    int64_t found = -1;
    if (asked.state_labels.empty() && asked.subtype != q_subtype_boolean) return found;
    for (std::size_t state = 0; state < asked.state_count; ++state) {
        if (std::strcmp(state_label(asked, state), label) != 0) continue;
        if (found >= 0) return -1;
        found = static_cast<int64_t>(state);
    }
    return found;
}

namespace {

bool numbers_are_valid(const std::vector<double>& values, std::size_t count) noexcept {
    for (std::size_t i = 1; i < count; ++i)
        if (!(values[i - 1] < values[i])) return false;
    return values[0] > -infinite && values[count - 1] < infinite;
}

bool bounds_are_valid(const std::vector<double>& bounds) noexcept {
    bool after_point = false;  // the interval before has no width
    for (std::size_t i = 1; i < bounds.size(); ++i) {
        if (!(bounds[i - 1] <= bounds[i])) return false;
        const bool point = bounds[i - 1] == bounds[i];
        if (point && after_point) return false;
        after_point = point;
    }
    return bounds[1] > -infinite && bounds[bounds.size() - 2] < infinite;
}

int64_t interval_of(const std::vector<double>& bounds, double value) noexcept {
    const std::size_t last = bounds.size() - 1;
    if (std::isnan(value)) return -1;
    if (value < bounds.front()) return bounds.front() <= -infinite ? 0 : -1;
    if (value >= bounds.back())
        return value == bounds.back() || bounds.back() >= infinite ? static_cast<int64_t>(last) - 1 : -1;
    const auto above = std::upper_bound(bounds.begin(), bounds.end(), value);
    return above - bounds.begin() - 1;
}

}  // namespace

bool state_values_are_valid(const node& asked) noexcept {
    if (!asked.has_values() || asked.state_values.empty()) return false;
    return asked.subtype == q_subtype_number ? numbers_are_valid(asked.state_values, asked.state_count)
                                             : bounds_are_valid(asked.state_values);
}

int64_t state_from_value(const node& asked, double value) noexcept {
    const std::vector<double>& values = asked.state_values;
    if (asked.subtype == q_subtype_interval) return interval_of(values, value);
    const auto last = values.begin() + static_cast<std::ptrdiff_t>(asked.state_count);
    const auto found = std::find_if(values.begin(), last,
                                    [&](double v) { return std::abs(value - v) <= 1e-6 * std::abs(value); });
    return found == last ? -1 : found - values.begin();
}

namespace {

bool is_present_order(const node& asked, const char* const* labels) noexcept {
    for (std::size_t state = 0; state < asked.state_count; ++state)
        if (labels[state] == nullptr || std::strcmp(labels[state], state_label(asked, state)) != 0)
            return false;
    return labels[asked.state_count] == nullptr;
}

// Position of each present state in the new order. Fails with q_error_usage unless each is named exactly once.
std::vector<std::size_t> new_positions(const node& changed, const char* const* labels) {
    std::unordered_map<std::string_view, std::size_t> state_of;
    for (std::size_t state = 0; state < changed.state_count; ++state)
        require(state_of.emplace(state_label(changed, state), state).second);
    constexpr std::size_t unnamed = largest_size;
    std::vector<std::size_t> positions(changed.state_count, unnamed);
    for (std::size_t position = 0; labels[position] != nullptr; ++position) {
        require(position < changed.state_count);
        const auto named = state_of.find(labels[position]);
        require(named != state_of.end() && positions[named->second] == unnamed);
        positions[named->second] = position;
    }
    require(std::ranges::count(positions, unnamed) == 0);
    return positions;
}

template <class T>
void permute(std::vector<T>& items, std::vector<T>& scratch,
             std::span<const std::size_t> positions) noexcept {
    if (items.empty()) return;
    for (std::size_t i = 0; i < positions.size(); ++i) scratch[positions[i]] = std::move(items[i]);
    items.swap(scratch);
}

}  // namespace

void reorder_states(node& changed, const char* const* labels) {
    require(changed.is_discrete() && changed.subtype == q_subtype_label);
    if (is_present_order(changed, labels)) return;
    const std::vector<std::size_t> positions = new_positions(changed, labels);
    std::vector<text> label_scratch(changed.state_labels.size());
    std::vector<double> weight_scratch(changed.state_count);
    std::vector<double> entry_scratch(changed.state_count);
    std::vector<owned_expression> expression_scratch(changed.state_count);

    permute(changed.state_labels, label_scratch, positions);
    findings& evidence = changed.evidence;
    permute(evidence.weights, weight_scratch, positions);
    if (evidence.index >= 0)
        evidence.index = static_cast<int64_t>(positions[static_cast<std::size_t>(evidence.index)]);
    for_each_family_table(
        changed, [&](table& affected) { permute_states(affected, changed, positions, entry_scratch); });
    for_each_model_over(
        changed, [&](model& affected) { permute_states(affected, changed, positions, expression_scratch); });
    if (changed.model) permute_weights(*changed.model, positions, expression_scratch);
    family_tables_changed(changed);
    changed.domain->structure_changed();
}

}  // namespace quarn
