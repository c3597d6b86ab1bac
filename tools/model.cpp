#include "model.h"

#include <algorithm>
#include <unordered_map>

#include "nearest.h"
#include "open_decision.h"
#include "source_file.h"
#include "table_fault.h"
#include "tool_failure.h"

namespace tool {
namespace {

bool is_of_function(q_error_t code) {
    return code == q_error_computation_failed || code == q_error_division_by_zero ||
           code == q_error_inappropriate_arguments || code == q_error_invalid_state_values;
}

}  // namespace

domain_owner read_domain(const std::string& name) {
    if (name.empty()) throw usage_failure("the name of the MODEL file is missing");
    return read_domain(name, source_file(name).path());
}

domain_owner read_domain(const std::string& name, const std::string& path) {
    source_file file(name);
    domain_owner domain(q_net_parse_domain(path.c_str(), source_file::hear, &file));
    file.finish(q_error_code());
    return domain;
}

std::string net_text(q_domain_t domain) {
    const std::unique_ptr<char, decltype(&q_string_delete)> text(q_domain_to_net(domain), q_string_delete);
    return text == nullptr ? "" : text.get();
}

model::model(const std::string& file) : model(file, read_domain(file)) {}

model::model(const std::string& file, domain_owner read) : file_(file), domain_(std::move(read)) {
    for (q_node_t node = q_domain_get_first_node(domain()); node != nullptr; node = q_node_get_next(node))
        nodes_.push_back(node);
    if (nodes_.empty()) throw command_failure(file + ": the network has no nodes");
    std::reverse(nodes_.begin(), nodes_.end());
}

q_node_t model::node_called(const std::string& name) const {
    const q_node_t node = q_domain_get_node_by_name(domain(), name.c_str());
    if (node != nullptr) return node;
    std::vector<std::string> names;
    for (const q_node_t known : nodes_) names.emplace_back(q_node_get_name(known));
    throw command_failure(file_ + ": there is no node " + name + did_you_mean(name, names));
}

void model::require_computable() const {
    if (std::ranges::all_of(nodes_, [](q_node_t node) { return q_node_get_kind(node) == q_kind_other; }))
        throw command_failure(file_ + ": the network has no chance or decision nodes to compute");
}

void model::compute(q_equilibrium_t equilibrium, q_mode_t mode) {
    const q_error_t code = propagate(equilibrium, mode);
    if (code != q_error_none) fail_with_library_error(file_, code);
}

q_error_t model::compute_what_can_be() { return propagate(q_equilibrium_sum, q_mode_normal); }

q_error_t model::propagate(q_equilibrium_t equilibrium, q_mode_t mode) {
    require_computable();
    if ((q_domain_is_compiled(domain()) == 1 || q_domain_compile(domain()) == q_error_none) &&
        q_domain_propagate(domain(), equilibrium, mode) == q_error_none)
        return q_error_none;
    const q_error_t code = q_error_code();
    if (is_of_function(code)) return code;
    std::string fault;
    if (code == q_error_invalid_probability_potential) fault = find_table_fault(nodes_);
    if (code == q_error_invalid_evidence) fault = find_open_decision(nodes_);
    if (!fault.empty()) throw command_failure(file_ + ": " + fault);
    fail_with_library_error(file_, code);
}

std::vector<q_node_t> conditioning_nodes(q_node_t node) {
    std::vector<q_node_t> nodes;
    const q_node_t* member = q_table_get_nodes(q_node_get_table(node));
    for (; member != nullptr && *member != nullptr; ++member)
        if (*member != node && q_node_get_kind(*member) == q_kind_discrete) nodes.push_back(*member);
    return nodes;
}

size_t most_probable_state(q_node_t node) {
    size_t best = 0;
    for (size_t state = 1; state < q_node_get_number_of_states(node); ++state)
        if (q_node_get_belief(node, state) > q_node_get_belief(node, best)) best = state;
    return best;
}

std::string sort_of(q_node_t node) {
    switch (q_node_get_category(node)) {
    case q_category_decision: return "a decision";
    case q_category_utility: return "a utility";
    case q_category_function: return "a function";
    default: return q_node_get_kind(node) == q_kind_continuous ? "continuous" : "discrete";
    }
}

std::string index_name(size_t state) { return std::to_string(state).insert(0, 1, '#'); }

std::vector<std::string> state_names(q_node_t node) {
    const size_t count = q_node_get_number_of_states(node);
    std::unordered_map<std::string_view, size_t> uses;
    for (size_t state = 0; state < count; ++state) ++uses[q_node_get_state_label(node, state)];
    std::vector<std::string> names;
    for (size_t state = 0; state < count; ++state) {
        const std::string_view label = q_node_get_state_label(node, state);
        const bool looks_otherwise = label.empty() || label.starts_with('#') || label.starts_with('(');
        names.push_back(uses[label] == 1 && !looks_otherwise ? std::string(label) : index_name(state));
    }
    return names;
}

}  // namespace tool
