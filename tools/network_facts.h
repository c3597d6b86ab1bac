// What a network consists of.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model.h"

namespace tool {

struct node_sort {
    std::string category;  // chance, decision, utility or function
    std::string kind;      // discrete, continuous, or real-valued
    std::string subtype;   // of discrete nodes: label, boolean, number or interval; else empty
    size_t count;
};

struct link_counts {
    size_t directed = 0;               // into chance nodes and utilities
    size_t informational = 0;          // into decisions
    size_t functional = 0;             // into functions, and out of real-valued ones
    std::optional<size_t> undirected;  // nothing where that cannot be told
};

// A node that has the most of something: the first one.
struct most_of_all {
    q_node_t node = nullptr;  // null: there is none
    long double count = 0;    // need not fit 64 bits
};

struct network_facts {
    std::vector<node_sort> sorts;  // in the order in which they occur
    link_counts links;
    most_of_all parents, states, numbers;
    long double all_numbers = 0;             // in the tables of all nodes
    std::optional<size_t> chain_components;  // as undirected links
    size_t models = 0;
    std::optional<std::vector<q_node_t>> without_data;
};

// To be called before tables are asked for.
network_facts find_facts(const model& described);

}  // namespace tool
