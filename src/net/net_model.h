// Models in potentials of the NET language.
#pragma once

#include <vector>

#include "expression.h"
#include "net_reader.h"
#include "node.h"

namespace quarn {

class model_parser {
public:
    // The parents of the node must be linked to it.
    model_parser(net_reader& in, node& owner) noexcept : in_(in), owner_(owner) {}

    // Reads an attribute after its name; false, and nothing is read, where it is none of a model.
    bool parse_attribute(const std::string& name);
    // Makes the model of all that was read. Without expressions there is none.
    void finish();

private:
    void parse_nodes();
    void parse_data();
    void parse_samples_per_interval();
    owned_expression parse_suitable();
    uint64_t mark_parents() noexcept;

    net_reader& in_;
    node& owner_;
    bool has_nodes_ = false;
    std::vector<node*> nodes_;
    std::vector<owned_expression>
        expressions_;  // grows as they come: a short text must not exhaust the memory
    uint64_t parent_mark_ = 0;
    std::size_t samples_per_interval_ = 0;
};

}  // namespace quarn
