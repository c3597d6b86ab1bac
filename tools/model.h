// A network read from a file.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "quarn.h"

namespace tool {

struct domain_deleter {
    void operator()(q_domain_t domain) const noexcept { q_domain_delete(domain); }
};
using domain_owner = std::unique_ptr<std::remove_pointer_t<q_domain_t>, domain_deleter>;

// Reads a NET file, `-` for standard input; its errors and warnings go to standard error as "file:line: message".
domain_owner read_domain(const std::string& name);
// The same where the text of that file lies elsewhere.
domain_owner read_domain(const std::string& name, const std::string& path);

// The network in the NET language; empty where that fails.
std::string net_text(q_domain_t domain);

class model {
public:
    // Reads a NET file that has nodes.
    explicit model(const std::string& file);
    // The network that was read from that file.
    model(const std::string& file, domain_owner read);

    const std::string& file() const noexcept { return file_; }
    q_domain_t domain() const noexcept { return domain_.get(); }
    // In creation order.
    const std::vector<q_node_t>& nodes() const noexcept { return nodes_; }
    // Fails when there is none.
    q_node_t node_called(const std::string& name) const;

    // Fails when there is nothing to compile.
    void require_computable() const;
    // Compiles unless that has been done, and propagates.
    void compute(q_equilibrium_t equilibrium = q_equilibrium_sum, q_mode_t mode = q_mode_normal);
    // The same in the ordinary way, but where a discrete function cannot be computed gives the error instead of failing: the
    // junction trees that depend on it have no results then.
    q_error_t compute_what_can_be();

private:
    // Gives the error of a function; fails with any other.
    q_error_t propagate(q_equilibrium_t equilibrium, q_mode_t mode);

    std::string file_;
    domain_owner domain_;
    std::vector<q_node_t> nodes_;
};

// The discrete parents of a node as they stand in its table, the last one varying fastest.
std::vector<q_node_t> conditioning_nodes(q_node_t node);

// The first one of those with the largest belief.
size_t most_probable_state(q_node_t node);

// "a decision", "continuous", and so on.
std::string sort_of(q_node_t node);

// '#' and the index of a state.
std::string index_name(size_t state);

// What selects each state of a node on the command line: its label where that is taken for it alone, else '#' and its
// index.
std::vector<std::string> state_names(q_node_t node);

}  // namespace tool
