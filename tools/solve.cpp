#include "solve.h"

#include <algorithm>
#include <span>

#include "tool_failure.h"

namespace tool {
namespace {

std::vector<q_node_t> nodes_of(const model& asked, q_category_t category) {
    std::vector<q_node_t> found;
    std::ranges::copy_if(asked.nodes(), std::back_inserter(found),
                         [&](q_node_t node) { return q_node_get_category(node) == category; });
    return found;
}

std::vector<q_node_t> parents_of(q_node_t node) {
    std::vector<q_node_t> parents;
    for (const q_node_t* parent = q_node_get_parents(node); *parent != nullptr; ++parent)
        parents.push_back(*parent);
    return parents;
}

std::span<double> policy_numbers(const model& asked, q_node_t decision) {
    const q_table_t table = q_node_get_table(decision);
    double* const numbers = q_table_get_data(table);
    if (numbers == nullptr) fail_with_library_error(asked.file());
    return {numbers, q_table_get_size(table)};
}

policy read_policy(const model& asked, q_node_t decision) {
    policy read{describe(decision)};
    if (read.decision.entered.is_observed()) return read;
    for (const q_node_t parent : conditioning_nodes(decision)) read.parents.push_back(describe(parent));
    const std::span<const double> numbers = policy_numbers(asked, decision);
    const size_t states = read.decision.states.size();
    for (size_t first = 0; first < numbers.size(); first += states) {
        const auto row = numbers.subspan(first, states);
        read.rows.push_back({{row.begin(), row.end()}});
    }
    return read;
}

}  // namespace

void set_uniform_policies(const model& asked) {
    for (const q_node_t decision : nodes_of(asked, q_category_decision)) {
        std::ranges::fill(policy_numbers(asked, decision), 1);
        q_node_touch_table(decision);
    }
}

std::vector<link_names> remove_needless_links(const model& asked) {
    const std::vector<q_node_t> decisions = nodes_of(asked, q_category_decision);
    std::vector<std::vector<q_node_t>> before;
    std::ranges::transform(decisions, std::back_inserter(before), parents_of);
    if (q_domain_minimize_limid(asked.domain()); q_error_code() != q_error_none)
        fail_with_library_error(asked.file());
    std::vector<link_names> removed;
    for (size_t i = 0; i < decisions.size(); ++i) {
        const std::vector<q_node_t> after = parents_of(decisions[i]);
        for (const q_node_t parent : before[i])
            if (std::ranges::find(after, parent) == after.end())
                removed.push_back({q_node_get_name(parent), q_node_get_name(decisions[i])});
    }
    return removed;
}

std::vector<policy> read_policies(const model& asked) {
    std::vector<policy> policies;
    for (const q_node_t decision : nodes_of(asked, q_category_decision))
        policies.push_back(read_policy(asked, decision));
    return policies;
}

solution solve(model& asked) {
    const std::vector<q_node_t> decisions = nodes_of(asked, q_category_decision);
    const std::vector<q_node_t> utilities = nodes_of(asked, q_category_utility);
    if (decisions.empty()) throw command_failure(asked.file() + ": the network has no decisions");
    if (utilities.empty())
        throw command_failure(asked.file() + ": the network has no utilities, so all decisions are as good");
    const model_beliefs before = compute_beliefs(asked, {}, q_mode_normal);
    require_all_computed(before);
    if (q_domain_update_policies(asked.domain()) != q_error_none) fail_with_library_error(asked.file());
    solution found{compute_beliefs(asked, utilities, q_mode_normal), *before.expected_utility};
    found.policies = read_policies(asked);
    return found;
}

}  // namespace tool
