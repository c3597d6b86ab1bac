#include "potential_data.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

#include "terminal.h"

namespace tool {
namespace {

bool has_idle_model(q_node_t node) {
    return q_node_get_model(node) != nullptr && q_node_get_category(node) != q_category_function;
}

}  // namespace

described_nodes find_described(q_domain_t domain) {
    constexpr std::string_view keyword = "potential (";
    const std::string text = net_text(domain);
    if (text.empty()) return {};
    described_nodes found(std::in_place);
    std::istringstream lines(text);
    std::vector<std::string> names;  // of the children of the last potential
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(keyword)) {
            std::istringstream children(
                line.substr(keyword.size(), line.find_first_of("|)") - keyword.size()));
            names.assign(std::istream_iterator<std::string>(children), {});
        } else if (line.starts_with("\tdata = ")) {
            for (const std::string& name : names) (*found)[name] |= names.size() > 1;
        }
    }
    return found;
}

bool needs_data(q_node_t node) {
    if (q_node_get_category(node) == q_category_function)
        return q_node_get_kind(node) == q_kind_discrete && q_node_get_model(node) == nullptr;
    return q_node_get_category(node) != q_category_decision;
}

void warn_of_models_without_data(const model& asked) {
    if (std::ranges::none_of(asked.nodes(), has_idle_model)) return;
    const described_nodes described = find_described(asked.domain());
    if (!described) return;
    for (const q_node_t node : asked.nodes()) {
        const std::string name = q_node_get_name(node);
        if (!has_idle_model(node) || described->contains(name)) continue;
        const bool is_utility = q_node_get_category(node) == q_category_utility;
        report(asked.file() + ": warning: node " + name + " has a model but no potential data; " +
               (is_utility ? "its utility is taken as 0" : "its states are taken as equally probable"));
    }
}

}  // namespace tool
