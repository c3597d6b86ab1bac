#include "network_facts.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "potential_data.h"
#include "tree_statistics.h"
#include "undirected_links.h"

namespace tool {
namespace {

bool is_real_valued(q_node_t node) {
    return q_node_get_category(node) == q_category_function && q_node_get_kind(node) == q_kind_other;
}

const char* category_of(q_node_t node) {
    switch (q_node_get_category(node)) {
    case q_category_decision: return "decision";
    case q_category_utility: return "utility";
    case q_category_function: return "function";
    default: return "chance";
    }
}

const char* kind_of(q_node_t node) {
    switch (q_node_get_kind(node)) {
    case q_kind_discrete: return "discrete";
    case q_kind_continuous: return "continuous";
    default: return "real-valued";
    }
}

const char* subtype_of(q_node_t node) {
    if (q_node_get_kind(node) != q_kind_discrete) return "";
    switch (q_node_get_subtype(node)) {
    case q_subtype_boolean: return "boolean";
    case q_subtype_number: return "number";
    case q_subtype_interval: return "interval";
    default: return "label";
    }
}

void count_sort(q_node_t node, std::vector<node_sort>& sorts) {
    const node_sort sort = {category_of(node), kind_of(node), subtype_of(node), 1};
    const auto known = std::ranges::find_if(sorts, [&](const node_sort& other) {
        return other.category == sort.category && other.kind == sort.kind && other.subtype == sort.subtype;
    });
    if (known == sorts.end())
        sorts.push_back(sort);
    else
        ++known->count;
}

void count_links(q_node_t node, link_counts& links) {
    const q_category_t category = q_node_get_category(node);
    for (const q_node_t parent : listed(q_node_get_parents(node))) {
        if (category == q_category_function || is_real_valued(parent))
            ++links.functional;
        else
            ++(category == q_category_decision ? links.informational : links.directed);
    }
}

// What the file gives of a node: of a continuous one, for each configuration, the mean where its parents are 0, a
// coefficient for each continuous parent, and the variance.
long double size_of_model(q_node_t node) {
    const bool is_discrete = q_node_get_kind(node) == q_kind_discrete;
    long double numbers = is_discrete ? static_cast<long double>(q_node_get_number_of_states(node)) : 1;
    if (q_node_get_category(node) == q_category_function) return is_discrete ? numbers : 0;
    size_t moments = 2;
    for (const q_node_t parent : listed(q_node_get_parents(node))) {
        if (q_node_get_kind(parent) == q_kind_discrete)
            numbers *= static_cast<long double>(q_node_get_number_of_states(parent));
        if (q_node_get_kind(parent) == q_kind_continuous) ++moments;
    }
    return q_node_get_kind(node) == q_kind_continuous ? numbers * static_cast<long double>(moments) : numbers;
}

void compare(most_of_all& most, q_node_t node, long double count) {
    if (count > most.count) most = {node, count};
}

// Each set of nodes that undirected links join is a component.
size_t count_components(const std::set<std::pair<std::string, std::string>>& links) {
    std::map<std::string, std::string> leads_to;  // a node that stands for the component stands for itself
    const auto end_of = [&](std::string name) {
        for (leads_to.try_emplace(name, name); leads_to[name] != name;) name = leads_to[name];
        return name;
    };
    for (const auto& [one, other] : links) leads_to[end_of(one)] = end_of(other);
    return static_cast<size_t>(
        std::ranges::count_if(leads_to, [](const auto& entry) { return entry.first == entry.second; }));
}

void find_undirected(const model& described, network_facts& facts) {
    std::set<std::pair<std::string, std::string>> links;
    for (auto [one, other] : undirected_links(described.domain())) {
        if (other < one) std::swap(one, other);
        links.emplace(one, other);
    }
    facts.links.undirected = links.size();
    facts.chain_components = count_components(links);
}

}  // namespace

network_facts find_facts(const model& described) {
    network_facts facts;
    const described_nodes with_data = find_described(described.domain());
    if (with_data) {
        find_undirected(described, facts);
        facts.without_data.emplace();
    }
    for (const q_node_t node : described.nodes()) {
        count_sort(node, facts.sorts);
        count_links(node, facts.links);
        if (q_node_get_kind(node) == q_kind_discrete)
            compare(facts.states, node, static_cast<long double>(q_node_get_number_of_states(node)));
        compare(facts.parents, node, static_cast<long double>(listed(q_node_get_parents(node)).size()));
        compare(facts.numbers, node, size_of_model(node));
        facts.all_numbers += size_of_model(node);
        if (q_node_get_model(node) != nullptr) ++facts.models;
        if (with_data && needs_data(node) && !with_data->contains(q_node_get_name(node)))
            facts.without_data->push_back(node);
    }
    return facts;
}

}  // namespace tool
