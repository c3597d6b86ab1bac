#include "evidence.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <set>
#include <string_view>

#include "source_file.h"
#include "tool_failure.h"

namespace tool {
namespace {

// As in NET files, what is too small is 0 and what is too large is infinite.
std::optional<double> parse_number(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size() || problem == std::errc::invalid_argument) return {};
    // Which of the two it was is not told.
    return problem == std::errc() ? number : std::strtod(std::string(text).c_str(), nullptr);
}

double parse_weight(std::string_view text, const std::string& argument) {
    const double weight = parse_number(text).value_or(-1);
    if (!(weight >= 0 && weight < std::numeric_limits<double>::max()))
        throw usage_failure(argument + ": weights must be numbers from 0 to below 1.7976931348623157e308, "
                                       "separated by blanks or commas");
    return weight;
}

// WEIGHT { (blanks | ',') WEIGHT }, without the parentheses around it.
std::vector<double> parse_weights(std::string_view list, const std::string& argument) {
    constexpr std::string_view separators = " \t,";
    std::vector<double> weights;
    for (;;) {
        list.remove_prefix(std::min(list.find_first_not_of(separators), list.size()));
        if (list.empty()) break;
        const std::string_view text = list.substr(0, list.find_first_of(separators));
        weights.push_back(parse_weight(text, argument));
        list.remove_prefix(text.size());
    }
    if (weights.empty()) throw usage_failure(argument + ": weights are missing");
    return weights;
}

evidence parse_argument(const std::string& argument) {
    const size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == argument.size())
        throw usage_failure(argument + ": evidence is written NODE=STATE");
    evidence parsed{argument.substr(0, equals), argument.substr(equals + 1), {}};
    const std::string_view state = parsed.state;
    if (state.starts_with('(') && state.ends_with(')'))
        parsed.weights = parse_weights(state.substr(1, state.size() - 2), argument);
    return parsed;
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

[[noreturn]] void fail_for_node(const model& target, q_node_t node, const std::string& problem) {
    throw command_failure(target.file() + ": node " + q_node_get_name(node) + " " + problem);
}

[[noreturn]] void fail_for_states(const model& target, q_node_t node, const std::string& problem) {
    fail_for_node(target, node, problem + "; its states are " + list_states(node));
}

// The index in '#INDEX'; -1 for anything else.
int64_t state_from_index(std::string_view text) {
    int64_t index = -1;
    if (!text.starts_with('#') || text.find_first_not_of("0123456789", 1) != std::string_view::npos)
        return -1;
    std::from_chars(text.data() + 1, text.data() + text.size(), index);
    return index;
}

bool has_label(q_node_t node, const std::string& label) {
    for (size_t state = 0; state < q_node_get_number_of_states(node); ++state)
        if (q_node_get_state_label(node, state) == label) return true;
    return false;
}

size_t find_state(const model& target, q_node_t node, const std::string& text) {
    int64_t state = state_from_index(text);
    if (state < 0) state = q_node_get_state_index_from_label(node, text.c_str());
    if (state < 0 && has_label(node, text))
        fail_for_states(target, node, "has several states called " + text);
    if (state < 0 || static_cast<size_t>(state) >= q_node_get_number_of_states(node))
        fail_for_states(target, node, "has no state " + text);
    return static_cast<size_t>(state);
}

void enter_weights(const model& target, q_node_t node, const std::vector<double>& weights) {
    const size_t count = q_node_get_number_of_states(node);
    if (weights.size() != count)
        fail_for_states(target, node,
                        "needs " + std::to_string(count) + " weights, not " + std::to_string(weights.size()));
    for (size_t state = 0; state < count; ++state)
        if (q_node_enter_finding(node, state, weights[state]) != q_error_none)
            fail_with_library_error(target.file());
}

void enter_value(const model& target, q_node_t node, const evidence& entered) {
    const std::optional<double> value = parse_number(entered.state);
    if (!value || !std::isfinite(*value))
        fail_for_node(target, node, "is continuous: its evidence is a number, not " + entered.state);
    if (q_node_enter_value(node, *value) != q_error_none) fail_with_library_error(target.file());
}

// Instead of what the model has.
void enter_case(const model& target, const std::string& case_file) {
    source_file file(case_file);
    file.finish(q_domain_parse_case(target.domain(), file.path().c_str(), source_file::hear, &file));
}

}  // namespace

std::vector<evidence> parse_evidence(const std::vector<std::string>& arguments) {
    std::vector<evidence> parsed;
    std::set<std::string> nodes;
    for (const std::string& argument : arguments) {
        parsed.push_back(parse_argument(argument));
        if (!nodes.insert(parsed.back().node).second)
            throw usage_failure(argument + ": evidence on this node is given twice");
    }
    return parsed;
}

void enter_evidence(const model& target, const evidence& entered) {
    const q_node_t node = target.node_called(entered.node);
    const q_kind_t kind = q_node_get_kind(node);
    if (kind == q_kind_other) fail_for_node(target, node, "is " + sort_of(node) + ": it takes no evidence");
    if (kind == q_kind_continuous) return enter_value(target, node, entered);
    if (!entered.weights.empty()) return enter_weights(target, node, entered.weights);
    if (q_node_select_state(node, find_state(target, node, entered.state)) != q_error_none)
        fail_with_library_error(target.file());
}

void enter_evidence(const model& target, const std::optional<std::string>& case_file,
                    const std::vector<evidence>& entered) {
    if (case_file == "-" && target.file() == "-")
        throw usage_failure("the model and the case cannot both come from standard input");
    if (case_file) enter_case(target, *case_file);
    for (const evidence& more : entered) enter_evidence(target, more);
}

}  // namespace tool
