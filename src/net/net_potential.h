// Potentials of the NET language: the links to a node and its table.
#pragma once

#include <unordered_set>

#include "net_reader.h"
#include "node.h"

namespace quarn {

class potential_parser {
public:
    potential_parser(net_reader& in, domain& target) noexcept : in_(in), target_(target) {}

    // Reads a potential after its keyword.
    void parse();

private:
    struct head {
        node* child = nullptr;
        std::vector<node*> parents;
    };
    struct body {
        node& child;
        bool has_data = false;
    };

    head parse_head();
    void parse_child(head& parsed);
    void parse_parent(head& parsed);
    node& parse_member();
    void require_parent(const head& parsed, node& parent);
    void add_links(const head& parsed);
    void parse_body(node& child);
    void parse_data(body& parsed);

    net_reader& in_;
    domain& target_;
    uint64_t head_mark_ = 0;                     // carried by the nodes met in the present head
    std::unordered_set<const node*> described_;  // the children of the potentials so far
};

}  // namespace quarn
