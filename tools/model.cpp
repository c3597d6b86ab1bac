#include "model.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>
#include <unistd.h>
#include <unordered_map>

#include "open_decision.h"
#include "table_fault.h"
#include "terminal.h"
#include "tool_failure.h"

namespace tool {
namespace {

constexpr size_t messages_shown = 20;  // of each sort

struct parse_messages {
    const std::string& file;
    size_t warnings = 0;
    size_t errors = 0;
};

void print_parse_message(size_t line, const char* message, void* data) noexcept {
    auto& messages = *static_cast<parse_messages*>(data);
    const bool is_warning = std::string_view(message).starts_with("warning: ");
    if (++(is_warning ? messages.warnings : messages.errors) > messages_shown) return;
    try {
        report(messages.file + ":" + std::to_string(line) + ": " + message);
    } catch (const std::bad_alloc&) {
        // The message is lost; that it came is not.
    }
}

void tell_how_many_more(const std::string& file, size_t count, const char* sort) {
    if (count > messages_shown)
        report(file + ": " + std::to_string(count - messages_shown) + " more " + sort);
}

// The library takes what looks like NET text for text, which nothing that begins with a slash or a point does.
std::string as_path(const std::string& file) { return file.starts_with('/') ? file : "./" + file; }

// Why the system does not let a file be read; empty when it now does.
std::string why_unreadable(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0) return std::generic_category().message(errno);
    std::error_code unknown;
    const bool is_directory = std::filesystem::is_directory(path, unknown);
    return is_directory ? std::generic_category().message(EISDIR) : "";
}

[[noreturn]] void fail_to_read(const std::string& file, q_error_t code) {
    if (code == q_error_io)
        if (const std::string reason = why_unreadable(file); !reason.empty())
            throw command_failure(file + ": cannot be read: " + reason);
    fail_with_library_error(file, code);
}

domain_owner read_domain(const std::string& file) {
    if (file.empty()) throw usage_failure("the name of the MODEL file is missing");
    parse_messages messages{file};
    domain_owner domain(q_net_parse_domain(as_path(file).c_str(), print_parse_message, &messages));
    const q_error_t code = q_error_code();
    tell_how_many_more(file, messages.warnings, "warnings");
    tell_how_many_more(file, messages.errors, "errors");
    if (domain == nullptr && messages.errors > 0) throw command_failure("");
    if (domain == nullptr) fail_to_read(file, code);
    return domain;
}

}  // namespace

model::model(const std::string& file) : file_(file), domain_(read_domain(file)) {
    for (q_node_t node = q_domain_get_first_node(domain()); node != nullptr; node = q_node_get_next(node))
        nodes_.push_back(node);
    if (nodes_.empty()) throw command_failure(file + ": the network has no nodes");
    std::reverse(nodes_.begin(), nodes_.end());
}

q_node_t model::node_called(const std::string& name) const {
    const q_node_t node = q_domain_get_node_by_name(domain(), name.c_str());
    if (node == nullptr) throw command_failure(file_ + ": there is no node " + name);
    return node;
}

void model::require_computable() const {
    if (std::ranges::all_of(nodes_, [](q_node_t node) { return q_node_get_kind(node) == q_kind_other; }))
        throw command_failure(file_ + ": the network has no chance or decision nodes to compute");
}

void model::compute(q_equilibrium_t equilibrium, q_mode_t mode) {
    require_computable();
    if ((q_domain_is_compiled(domain()) == 1 || q_domain_compile(domain()) == q_error_none) &&
        q_domain_propagate(domain(), equilibrium, mode) == q_error_none)
        return;
    const q_error_t code = q_error_code();
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
