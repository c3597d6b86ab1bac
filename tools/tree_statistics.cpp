#include "tree_statistics.h"

#include <algorithm>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

namespace tool {
namespace {

using node_list = std::vector<q_node_t>;
using link_set = std::set<std::pair<q_node_t, q_node_t>>;

bool is_continuous(q_node_t node) { return q_node_get_kind(node) == q_kind_continuous; }

void connect(node_list nodes, link_set& links) {
    std::erase_if(nodes, [](q_node_t node) { return q_node_get_kind(node) == q_kind_other; });
    for (const q_node_t node : nodes)
        for (const q_node_t other : nodes)
            if (node < other) links.emplace(node, other);
}

link_set moral_graph(const model& described) {
    link_set graph;
    for (const q_node_t node : described.nodes()) {
        node_list family = listed(q_node_get_parents(node));
        family.push_back(node);
        if (q_node_get_category(node) != q_category_function) connect(family, graph);
    }
    return graph;
}

long double configurations(const node_list& members) {
    long double count = 1;
    for (const q_node_t member : members)
        if (!is_continuous(member)) count *= static_cast<long double>(q_node_get_number_of_states(member));
    return count;
}

std::set<q_junction_tree_t> trees_with_utilities(const model& triangulated) {
    std::set<q_junction_tree_t> trees;
    for (const q_node_t node : triangulated.nodes()) {
        if (q_node_get_category(node) != q_category_utility) continue;
        for (const q_node_t parent : listed(q_node_get_parents(node)))
            if (q_node_get_kind(parent) == q_kind_discrete) trees.insert(q_node_get_junction_tree(parent));
    }
    return trees;
}

// What is kept for a clique or separator: its table, its utilities, and moments as those of a joint distribution too.
long double kept_numbers(const node_list& members, bool with_utilities, bool with_joint) {
    const long double size = table_size(members);
    return size + (with_utilities ? configurations(members) : 0) + (with_joint ? size : 0);
}

struct kept_memory {
    long double numbers = 0;
    long double largest_separator = 0;  // its configurations
};

// Adds all cliques and separators, from the root down, which decides what moments are kept.
void add_tree(q_junction_tree_t tree, bool with_utilities, kept_memory& kept) {
    struct step {
        q_clique_t clique, from;
    };
    std::vector<step> left = {{q_junction_tree_get_root(tree), nullptr}};
    while (!left.empty()) {
        const auto [clique, from] = left.back();
        left.pop_back();
        const node_list members = listed(q_clique_get_members(clique));
        node_list separator;
        if (from != nullptr) {
            separator = listed(q_clique_get_members(from));
            std::erase_if(separator, [&](q_node_t node) { return std::ranges::count(members, node) == 0; });
        }
        const bool sends_moments = std::ranges::any_of(separator, is_continuous);
        kept.numbers += kept_numbers(members, with_utilities, sends_moments);
        if (from != nullptr) kept.numbers += kept_numbers(separator, with_utilities, sends_moments);
        kept.largest_separator = std::max(kept.largest_separator, configurations(separator));
        for (const q_clique_t* next = q_clique_get_neighbors(clique); *next != nullptr; ++next)
            if (*next != from) left.push_back({*next, clique});
    }
}

}  // namespace

tree_statistics measure_trees(const model& triangulated) {
    tree_statistics found;
    link_set graph = moral_graph(triangulated);
    const size_t moral_links = graph.size();
    const std::set<q_junction_tree_t> with_utilities = trees_with_utilities(triangulated);
    kept_memory kept;
    for (q_junction_tree_t tree = q_domain_get_first_junction_tree(triangulated.domain()); tree != nullptr;
         tree = q_junction_tree_get_next(tree)) {
        ++found.trees;
        found.total_table_size += static_cast<long double>(q_junction_tree_get_total_size(tree));
        add_tree(tree, with_utilities.contains(tree), kept);
        for (const q_clique_t* clique = q_junction_tree_get_cliques(tree); *clique != nullptr; ++clique) {
            ++found.cliques;
            const node_list members = listed(q_clique_get_members(*clique));
            connect(members, graph);
            const long double size = table_size(members);
            found.clique_numbers += size;
            if (size <= found.largest_table_size) continue;
            found.largest_table_size = size;
            found.largest_clique = members;
        }
    }
    found.compiled_numbers = kept.numbers + 2 * kept.largest_separator;
    found.fill_in_links = graph.size() - moral_links;
    return found;
}

// A configuration has a probability, and a mean and a row of a symmetric matrix for each continuous node.
long double table_size(const std::vector<q_node_t>& members) {
    const auto continuous = static_cast<long double>(std::ranges::count_if(members, is_continuous));
    return configurations(members) * (1 + continuous * (continuous + 3) / 2);
}

std::vector<q_node_t> listed(const q_node_t* nodes) {
    std::vector<q_node_t> list;
    for (; *nodes != nullptr; ++nodes) list.push_back(*nodes);
    return list;
}

nlohmann::ordered_json whole(long double number) {
    if (number >= 0x1p64L - 1) return {};
    return static_cast<uint64_t>(number);
}

}  // namespace tool
