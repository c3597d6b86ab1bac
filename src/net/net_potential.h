// Potentials of the NET language: the links to a node, its tables and its model; what the nodes of a chain component
// share.
#pragma once

#include <unordered_map>
#include <unordered_set>
#include <vector>

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
        std::vector<node*> children;
        std::vector<node*> parents;
    };

    head parse_head();
    void parse_child(head& parsed);
    void parse_parent(head& parsed);
    node& parse_member();
    void require_joinable(const node& member);
    void require_parent(const head& parsed, node& parent);

    // Of one node.
    void add_links(const head& parsed);
    void add_link(node& child, node& parent);
    void parse_own_body(node& child);
    void parse_data(node& child);
    void parse_experience(node& child);
    void parse_fading(node& child);

    // Of several nodes.
    void require_unlinked(const head& parsed);
    table& join(const head& parsed);
    void parse_shared_body(table& shared);

    void parse_table(table& described);

    net_reader& in_;
    domain& target_;
    uint64_t head_mark_ = 0;  // carried by the nodes met in the present head
    std::unordered_map<const node*, std::vector<const table*>>
        shared_by_;                              // the potentials that join a node to others
    std::unordered_set<const node*> described_;  // those that have had a potential of their own
};

}  // namespace quarn
