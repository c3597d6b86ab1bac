// A network read from a file.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "quarn.h"

namespace tool {

class model {
public:
    // Reads a NET file; its errors and warnings go to standard error as "file:line: message".
    explicit model(const std::string& file);

    const std::string& file() const noexcept { return file_; }
    q_domain_t domain() const noexcept { return domain_.get(); }
    // In creation order.
    const std::vector<q_node_t>& nodes() const noexcept { return nodes_; }
    // Fails when there is none.
    q_node_t node_called(const std::string& name) const;

    // Compiles and propagates.
    void compute();

private:
    struct deleter {
        void operator()(q_domain_t domain) const noexcept { q_domain_delete(domain); }
    };

    std::string file_;
    std::unique_ptr<std::remove_pointer_t<q_domain_t>, deleter> domain_;
    std::vector<q_node_t> nodes_;
};

// What selects a state on the command line: its label where that is taken for it alone, else '#' and its index.
std::string state_name(q_node_t node, size_t state);

}  // namespace tool
