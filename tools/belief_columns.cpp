#include "belief_columns.h"

#include <cmath>

#include "csv_text.h"
#include "tool_failure.h"

namespace tool {
namespace {

q_number_t expected_utility(q_node_t node) { return q_node_get_expected_utility(node, 0); }

}  // namespace

belief_columns::belief_columns(const model& asked, const std::vector<q_node_t>& nodes) : asked_(asked) {
    for (const q_node_t node : nodes) {
        if (q_node_get_kind(node) == q_kind_discrete) {
            columns_.push_back({node, q_node_get_number_of_states(node), nullptr, ""});
        } else if (q_node_get_kind(node) == q_kind_continuous) {
            columns_.push_back({node, 0, q_node_get_mean, ":mean"});
            columns_.push_back({node, 0, q_node_get_variance, ":variance"});
        } else if (q_node_get_category(node) == q_category_utility) {
            columns_.push_back({node, 0, expected_utility, ":expected"});
        } else {
            columns_.push_back({node, 0, q_node_get_value, ""});
        }
    }
    for (const column& shown : columns_) field_count_ += shown.number == nullptr ? shown.states : 1;
}

void belief_columns::append_names(std::string& line) const {
    for (const column& shown : columns_) {
        const std::string name = q_node_get_name(shown.node);
        if (shown.number != nullptr) {
            append_field(line, name + shown.suffix);
            line += ',';
            continue;
        }
        for (const std::string& state : state_names(shown.node)) {
            append_field(line, name + "=" + state);
            line += ',';
        }
    }
}

void belief_columns::append_values(std::string& line) const {
    for (const column& shown : columns_)
        if (shown.number == nullptr)
            append_beliefs(shown, line);
        else
            append_number(shown, line);
}

void belief_columns::append_nothing(std::string& line) const { line.append(field_count_, ','); }

void belief_columns::append_beliefs(const column& shown, std::string& line) const {
    for (size_t state = 0; state < shown.states; ++state) {
        const double belief = q_node_get_belief(shown.node, state);
        if (belief < 0) fail_with_library_error(asked_.file());
        tool::append_number(line, belief);
        line += ',';
    }
}

// Functions need not have values, nor utilities where none of what they depend on can occur.
void belief_columns::append_number(const column& shown, std::string& line) const {
    const double number = shown.number(shown.node);
    const q_error_t code = number == -1 ? q_error_code() : q_error_none;
    if (code != q_error_none &&
        (q_node_get_category(shown.node) != q_category_function || code == q_error_no_memory))
        fail_with_library_error(asked_.file(), code);
    if (code == q_error_none && !std::isnan(number)) tool::append_number(line, number);
    line += ',';
}

}  // namespace tool
