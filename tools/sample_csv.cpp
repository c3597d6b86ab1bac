#include "sample_csv.h"

#include "csv_text.h"
#include "terminal.h"
#include "tool_failure.h"

namespace tool {

sample_csv::sample_csv(const model& sampled, const std::vector<q_node_t>& nodes)
    // A line must not be empty.
    : sampled_(sampled), no_value_(nodes.size() == 1 ? "\"\"" : "") {
    for (const q_node_t node : nodes) {
        column& added = columns_.emplace_back(column{node});
        if (q_node_get_kind(node) == q_kind_discrete)
            for (const std::string& name : state_names(node)) append_field(added.states.emplace_back(), name);
        else
            added.number_of = q_node_get_category(node) == q_category_utility ? q_node_get_sampled_utility
                                                                              : q_node_get_sampled_value;
    }
}

std::string sample_csv::header() const {
    std::string text;
    for (const column& shown : columns_) text.append(q_node_get_name(shown.node)) += ',';
    text.back() = '\n';
    return text;
}

void sample_csv::append_case(std::string& text) {
    for (column& shown : columns_) {
        if (shown.number_of == nullptr)
            text += shown.states[static_cast<size_t>(q_node_get_sampled_state(shown.node))];
        else
            append_number(shown, text);
        text += ',';
    }
    text.back() = '\n';
}

void sample_csv::append_number(column& shown, std::string& text) {
    const double number = shown.number_of(shown.node);
    if (const q_error_t code = number == -1 ? q_error_code() : q_error_none; code != q_error_none) {
        if (q_node_get_category(shown.node) != q_category_function || code == q_error_no_memory)
            fail_with_library_error(sampled_.file(), code);
        if (shown.missing++ == 0) shown.reason = code;
        text += no_value_;
        return;
    }
    tool::append_number(text, number);
}

void sample_csv::report_missing_values() const {
    for (const column& shown : columns_)
        if (shown.missing > 0)
            report(sampled_.file() + ": warning: node " + q_node_get_name(shown.node) + " has no value in " +
                   std::to_string(shown.missing) + (shown.missing == 1 ? " case: " : " cases: ") +
                   in_words(shown.reason));
}

}  // namespace tool
