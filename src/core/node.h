// A node: one variable, utility or function of a network, with its states, links, tables and evidence.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "allocation.h"
#include "attributes.h"
#include "domain.h"
#include "findings.h"
#include "handle_list.h"
#include "model.h"
#include "quarn.h"
#include "table.h"

using node_list = quarn::handle_list<q_node>;

struct q_node {
    q_node(q_domain& owner, q_category_t of_category, q_kind_t of_kind, q_subtype_t of_subtype);
    ~q_node();
    q_node(const q_node&) = delete;
    q_node& operator=(const q_node&) = delete;

    bool is_discrete() const noexcept { return kind == q_kind_discrete; }
    bool is_continuous() const noexcept { return kind == q_kind_continuous; }
    bool has_kind() const noexcept { return kind != q_kind_other; }
    bool is(q_category_t wanted) const noexcept { return category == wanted; }
    bool is_function() const noexcept { return is(q_category_function); }
    bool is_real_function() const noexcept { return is_function() && kind == q_kind_other; }
    bool is_utility() const noexcept { return is(q_category_utility); }
    bool has_values() const noexcept {
        return is_discrete() && (subtype == q_subtype_number || subtype == q_subtype_interval);
    }

    // The table has new values: it is to be checked again, and results are to be computed from scratch.
    void table_changed() noexcept;

    q_domain* domain;
    q_category_t category;
    q_kind_t kind;
    q_subtype_t subtype;

    // Places among the nodes of the domain.
    q_node* older = nullptr;
    q_node* newer = nullptr;
    std::size_t number = 0;  // 1 .. node count in creation order; see q_domain::number_nodes
    std::size_t vertex = 0;  // number among the vertices of the compiled domain; meaningless without one
    uint64_t mark = 0;       // of the last walk over the graph that met the node; see q_domain::new_mark

    quarn::text name;   // null: not named yet
    quarn::text label;  // null: none
    int32_t x = 0;
    int32_t y = 0;
    quarn::attribute_list attributes;
    void* user_data = nullptr;
    void (*user_data_cleanup)(q_node_t) = nullptr;

    node_list parents;
    node_list children;
    node_list relatives;                          // result of the last query of ancestors or descendants
    quarn::chain_component* component = nullptr;  // that it is a member of; null: none

    // Discrete nodes only.
    std::size_t state_count = 1;
    std::vector<quarn::text> state_labels;  // empty: none set; else one for each state, null: not set
    std::vector<double> state_values;       // empty: never set; else state_count + 1 numbers
    quarn::findings evidence;               // as entered

    // Continuous nodes only: the value entered as evidence.
    bool value_is_entered = false;
    double entered_value = 0;

    // Functions only, as of the last propagation: of a real-valued one its value, and why it has none; of a discrete one
    // why its table could not be computed.
    double value = 0;
    q_error_t value_failure = q_error_no_equilibrium;

    // In the configuration that was drawn last, if the domain still has one.
    int64_t sampled_state = -1;                 // of a discrete node
    double sampled_value = 0;                   // of any other one
    q_error_t sampled_failure = q_error_usage;  // why a real-valued function has no value in it

    // Evidence on this node is entered on that one too, and its results are read there. Nothing links nodes yet.
    q_node* linked = nullptr;

    std::unique_ptr<q_table> own_table;  // probabilities, policy, density or utilities; null until asked for
    std::unique_ptr<q_table> experience;
    std::unique_ptr<q_table> fading;
    std::unique_ptr<q_model> model;  // expressions; null: none
    bool table_is_valid =
        false;  // checked, and its distributions divided by their sums, since the last change
};

namespace quarn {

constexpr std::size_t no_vertex = static_cast<std::size_t>(-1);

// Creates a node after checking that it may join the domain, and uncompiles it (but for real-valued functions).
node& create_node(domain& owner, q_category_t category, q_kind_t kind, q_subtype_t subtype = q_subtype_label);

// The checks of create_node for a node of that category and kind; fails with q_error_cg_limids_not_supported or
// q_error_cyclic_functional_dependency.
void require_admissible(domain& owner, q_category_t category, q_kind_t kind);

// The kind that a new node of the category gets when the caller asks for `kind`. Fails with q_error_usage.
q_kind_t kind_for(q_category_t category, q_kind_t kind);

void set_category(node& changed, q_category_t category);
void set_node_name(node& named, const char* name);
// The name of a node, an automatic one being given first where there is none.
const char* node_name(node& named);
node& clone_node(node& original);
// Fails with q_error_usage for a member of a chain component, else only where a child has a model.
void delete_node(node& deleted);

}  // namespace quarn
