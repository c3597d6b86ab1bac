// A domain: one network with its nodes and everything that belongs to it.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "attributes.h"
#include "compile_settings.h"
#include "handle_list.h"
#include "log_file.h"
#include "name_index.h"
#include "quarn.h"
#include "random_generator.h"
#include "workers.h"

namespace quarn {

using domain = ::q_domain;
using node = ::q_node;
using table = ::q_table;
struct chain_component;

// What compilation makes of a domain; the modules above derive from it. A domain without one is not compiled.
struct compiled_state {
    virtual ~compiled_state() = default;
    // The table of a node has new values: results computed from the old ones must not be extended.
    virtual void table_changed(const node& changed) noexcept = 0;
};

// What sampling prepares for all nodes and links of a domain, or for what was compiled from it; the modules above derive
// from it.
struct sampling_plan {
    virtual ~sampling_plan() = default;
};

// The nodes of a domain by category and kind; these decide what may join it.
struct node_counts {
    std::size_t& of_category(q_category_t category) { return by_category[index(category)]; }
    std::size_t of_category(q_category_t category) const { return by_category[index(category)]; }
    std::size_t functions() const { return of_category(q_category_function); }
    std::size_t decisions_and_utilities() const {
        return of_category(q_category_decision) + of_category(q_category_utility);
    }

    // Links are counted when a function node informs a node that is none.
    void add_link(q_category_t parent, q_category_t child) {
        if (informs(parent, child)) ++function_links;
    }
    void remove_link(q_category_t parent, q_category_t child) {
        if (informs(parent, child)) --function_links;
    }

    std::size_t discrete = 0;
    std::size_t continuous = 0;
    std::size_t function_links = 0;

private:
    static bool informs(q_category_t parent, q_category_t child) {
        return parent == q_category_function && child != q_category_function;
    }
    static std::size_t index(q_category_t category) {
        return static_cast<std::size_t>(category - q_category_function);
    }
    std::array<std::size_t, 5> by_category{};
};

}  // namespace quarn

struct q_domain {
    q_domain();
    ~q_domain();
    q_domain(const q_domain&) = delete;
    q_domain& operator=(const q_domain&) = delete;

    // Appends a node in creation order; removes one. Keep the counts.
    void link(q_node& added) noexcept;
    void unlink(q_node& removed) noexcept;

    // A fresh mark for a walk over the graph: no node carries it yet.
    uint64_t new_mark() noexcept { return ++last_mark; }
    // Drops what was compiled.
    void uncompile() noexcept {
        compiled.reset();
        sampling.reset();
    }
    // To be told of every change of nodes, states and links, but for those that concern real-valued functions only: these
    // are in no table. Drops all that depends on the structure.
    void structure_changed() noexcept {
        uncompile();
        configuration_is_drawn = false;
    }
    // The numbers of the nodes in creation order, 1 .. node_count, brought up to date.
    void number_nodes() noexcept;

    q_node* oldest = nullptr;  // from there on through q_node::newer: creation order
    q_node* newest = nullptr;
    std::size_t node_count = 0;
    bool numbers_are_current = true;
    quarn::node_counts counts;
    quarn::name_index names;
    uint64_t last_mark = 0;
    std::vector<std::unique_ptr<quarn::chain_component>> components;  // in creation order

    int32_t node_width = 0;
    int32_t node_height = 0;
    quarn::attribute_list attributes;
    void* user_data = nullptr;
    void (*user_data_cleanup)(q_domain_t) = nullptr;

    quarn::workers workers;  // of operations on its tables
    quarn::compile_settings settings;
    quarn::log_file log;
    const void* owner =
        nullptr;  // what the domain is a part of: evidence is entered there. Nothing sets it yet
    std::unique_ptr<quarn::compiled_state> compiled;
    quarn::handle_list<q_node> separation_result;  // of the last query of d-separation

    quarn::random_generator random;
    std::unique_ptr<quarn::sampling_plan> sampling;  // for the domain as it is; null: not made yet
    bool configuration_is_drawn = false;             // that the nodes hold
    double drawn_log_probability = 0;                // of the states in it
};

namespace quarn {

// Runs the clean-up callbacks and frees everything; fails with q_error_io, after that, when the log cannot be closed.
void delete_domain(domain* deleted);

}  // namespace quarn
