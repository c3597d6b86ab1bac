#include "case_columns.h"

#include <algorithm>
#include <unordered_map>

#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

using column_index = std::unordered_map<std::string, size_t>;

[[noreturn]] void fail_for_columns(const case_rows& cases, const std::string& problem) {
    throw command_failure(cases.file() + ":" + std::to_string(cases.columns_line()) + ": " +
                          visible(problem));
}

column_index index_columns(const case_rows& cases) {
    column_index index;
    for (const std::string& name : cases.columns())
        if (!index.emplace(name, index.size()).second)
            fail_for_columns(cases, "column " + name + " is there twice");
    return index;
}

// Not discrete functions either: a state observed of one would say what it is computed from only where that agrees.
bool is_computed(q_node_t node) {
    return q_node_get_kind(node) == q_kind_other || q_node_get_category(node) == q_category_function;
}

}  // namespace

case_columns find_columns(const case_rows& cases, const model& asked, const std::vector<std::string>& kept) {
    case_columns found{{}, {}, {}, cases.columns().size()};
    const column_index index = index_columns(cases);
    for (const std::string& name : kept) {
        const auto column = index.find(name);
        if (column == index.end()) fail_for_columns(cases, "there is no column " + name + " to be kept");
        if (std::ranges::find(found.kept, column->second) == found.kept.end())
            found.kept.push_back(column->second);
    }
    for (size_t column = 0; column < found.count; ++column) {
        if (std::ranges::find(found.kept, column) != found.kept.end()) continue;
        const std::string& name = cases.columns()[column];
        const q_node_t node = q_domain_get_node_by_name(asked.domain(), name.c_str());
        if (node == nullptr || name.find('\0') != std::string::npos)
            fail_for_columns(cases, "column " + name + " is no node of " + asked.file() +
                                        "; --keep takes columns that are none");
        if (is_computed(node))
            found.unused.push_back(name);
        else
            found.evidence.push_back({column, name});
    }
    return found;
}

}  // namespace tool
