#include "model.h"

#include <algorithm>
#include <cstdio>

#include "tool_failure.h"

namespace tool {
namespace {

struct parse_messages {
    const char* file;
    bool any_error = false;
};

void print_parse_message(size_t line, const char* message, void* data) {
    auto& messages = *static_cast<parse_messages*>(data);
    std::fprintf(stderr, "%s:%zu: %s\n", messages.file, line, message);
    if (!std::string_view(message).starts_with("warning: ")) messages.any_error = true;
}

// The library takes what looks like NET text for text, which nothing that begins with a slash or a point does.
std::string as_path(const std::string& file) { return file.starts_with('/') ? file : "./" + file; }

q_domain_t read_domain(const std::string& file) {
    parse_messages messages{file.c_str()};
    const q_domain_t domain = q_net_parse_domain(as_path(file).c_str(), print_parse_message, &messages);
    if (domain == nullptr && messages.any_error) throw command_failure("");
    if (domain == nullptr) fail_with_library_error(file);
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

void model::compute() {
    if (q_domain_compile(domain()) != q_error_none ||
        q_domain_propagate(domain(), q_equilibrium_sum, q_mode_normal) != q_error_none)
        fail_with_library_error(file_);
}

std::string state_name(q_node_t node, size_t state) {
    const std::string label = q_node_get_state_label(node, state);
    const bool is_unique = q_node_get_state_index_from_label(node, label.c_str()) >= 0;
    const bool looks_otherwise = label.starts_with('#') || label.starts_with('(');
    return is_unique && !looks_otherwise ? label : "#" + std::to_string(state);
}

}  // namespace tool
