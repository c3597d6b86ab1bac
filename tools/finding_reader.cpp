#include "finding_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>

#include "model.h"
#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr int64_t no_state = -1, several_states = -2;

// As in NET files, what is too small is 0 and what is too large is infinite.
std::optional<double> parse_number(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size() || problem == std::errc::invalid_argument) return {};
    // Which of the two it was is not told.
    return problem == std::errc() ? number : std::strtod(std::string(text).c_str(), nullptr);
}

double parse_weight(std::string_view text, const std::string& subject) {
    const double weight = parse_number(text).value_or(-1);
    if (!(weight >= 0 && weight < std::numeric_limits<double>::max()))
        throw command_failure(subject + ": weights must be numbers from 0 to below 1.7976931348623157e308, "
                                        "separated by blanks or commas");
    return weight;
}

std::string list_states(q_node_t node) {
    constexpr size_t shown = 20;
    const size_t count = q_node_get_number_of_states(node);
    std::string list;
    for (size_t state = 0; state < std::min(count, shown); ++state) {
        if (state > 0) list += ", ";
        list += index_name(state);
        if (const std::string_view label = q_node_get_state_label(node, state); !label.empty())
            list.append(" ").append(label);
    }
    if (count > shown) list.append(" ... (").append(std::to_string(count)).append(" in all)");
    return list;
}

// The index in '#INDEX'.
int64_t state_from_index(std::string_view text) {
    int64_t index = no_state;
    if (!text.starts_with('#') || text.find_first_not_of("0123456789", 1) != std::string_view::npos)
        return no_state;
    std::from_chars(text.data() + 1, text.data() + text.size(), index);
    return index;
}

void require_entered(q_status_t status) {
    if (status != q_error_none) throw std::bad_alloc();  // all else has been seen to
}

}  // namespace

bool is_likelihood(std::string_view text) noexcept { return text.starts_with('(') && text.ends_with(')'); }

std::vector<double> parse_weights(std::string_view likelihood, const std::string& subject) {
    constexpr std::string_view separators = " \t,";
    std::string_view list = likelihood.substr(1, likelihood.size() - 2);
    std::vector<double> weights;
    for (;;) {
        list.remove_prefix(std::min(list.find_first_not_of(separators), list.size()));
        if (list.empty()) break;
        const std::string_view text = list.substr(0, list.find_first_of(separators));
        weights.push_back(parse_weight(text, subject));
        list.remove_prefix(text.size());
    }
    if (weights.empty()) throw command_failure(subject + ": weights are missing");
    return weights;
}

finding_reader::finding_reader(q_node_t node) : node_(node) {
    if (q_node_get_kind(node) == q_kind_other) fail("is " + sort_of(node) + ": it takes no evidence");
    if (q_node_get_kind(node) == q_kind_continuous) return;
    for (size_t state = 0; state < q_node_get_number_of_states(node); ++state) {
        const std::string_view label = q_node_get_state_label(node, state);
        if (label.empty()) continue;
        const auto [known, is_new] = states_.emplace(label, static_cast<int64_t>(state));
        if (!is_new) known->second = several_states;
    }
}

void finding_reader::enter(std::string_view text) const {
    if (q_node_get_kind(node_) == q_kind_continuous) return enter_value(text);
    if (is_likelihood(text)) return enter_weights(text);
    require_entered(q_node_select_state(node_, state_called(text)));
}

void finding_reader::enter_value(std::string_view text) const {
    const std::optional<double> value = parse_number(text);
    if (!value || !std::isfinite(*value))
        fail("is continuous: its evidence is a number, not " + std::string(text));
    require_entered(q_node_enter_value(node_, *value));
}

void finding_reader::enter_weights(std::string_view text) const {
    const std::vector<double> weights = parse_weights(text, std::string("node ") + q_node_get_name(node_));
    const size_t count = q_node_get_number_of_states(node_);
    if (weights.size() != count)
        fail_for_states("needs " + std::to_string(count) + " weights, not " + std::to_string(weights.size()));
    for (size_t state = 0; state < count; ++state)
        require_entered(q_node_enter_finding(node_, state, weights[state]));
}

size_t finding_reader::state_called(std::string_view text) const {
    int64_t state = state_from_index(text);
    if (state < 0)
        if (const auto found = states_.find(text); found != states_.end()) state = found->second;
    if (state == several_states) fail_for_states("has several states called " + std::string(text));
    if (state < 0 || static_cast<size_t>(state) >= q_node_get_number_of_states(node_))
        fail_for_states("has no state " + std::string(text));
    return static_cast<size_t>(state);
}

void finding_reader::fail(const std::string& problem) const {
    throw command_failure(std::string("node ") + q_node_get_name(node_) + " " + visible(problem));
}

void finding_reader::fail_for_states(const std::string& problem) const {
    fail(problem + "; its states are " + list_states(node_));
}

}  // namespace tool
