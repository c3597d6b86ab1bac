// Lack of memory in every operation that changes a network or makes part of one.
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "allocation_faults.h"
#include "network_building.h"
#include "scenarios.h"

namespace {

void number_entries(q_table_t table) {
    std::vector<double> numbers(q_table_get_size(table));
    std::iota(numbers.begin(), numbers.end(), 1.0);
    set_data(table, numbers);
}

// Where the nodes of family() are.
enum { a, b, other_b, c, x, y, z, f };

// Discrete and continuous nodes with all kinds of tables, properties and evidence. `c` has the parents a and b, `x`
// has a, `y` has a and x.
owned_domain family() {
    owned_domain domain(q_domain_new());
    std::vector<q_node_t> n;
    for (const char* name : {"a", "b", "o", "c"})
        n.push_back(new_chance(domain.get(), name, name[0] == 'a' ? 2 : 3));
    for (const char* name : {"x", "y", "z"}) n.push_back(new_continuous(domain.get(), name));
    n.push_back(new_node(domain.get(), "fo"));
    q_domain_set_attribute(domain.get(), "made", "by hand");
    q_node_set_label(n[c], "a child");
    q_node_set_attribute(n[c], "first", "1");
    q_node_set_attribute(n[c], "second", "2");
    for (std::size_t state = 0; state < 2; ++state)
        q_node_set_state_label(n[a], state, state == 0 ? "no" : "yes");
    for (int node : {b, other_b}) {
        q_node_set_subtype(n[std::size_t(node)], q_subtype_number);
        for (std::size_t state = 0; state < 3; ++state)
            q_node_set_state_value(n[std::size_t(node)], state, double(state));
    }
    q_node_select_state(n[a], 1);
    q_node_enter_finding(n[b], 2, 0.25);
    q_node_add_parent(n[c], n[a]);
    q_node_add_parent(n[c], n[b]);
    for (q_table_t table : {q_node_get_table(n[c]), q_node_new_experience_table(n[c]),
                            q_node_new_fading_table(n[c]), q_node_get_table(n[a])})
        number_entries(table);
    for (int child : {x, y}) q_node_add_parent(n[std::size_t(child)], n[a]);
    q_node_add_parent(n[y], n[x]);
    for (std::size_t i = 0; i < 2; ++i) {
        q_node_set_cg_intercept(n[y], i, 3.5 + double(i));
        q_node_set_cg_coefficient(n[y], n[x], i, -2.0 - double(i));
        q_node_set_cg_variance(n[y], i, 0.5 + double(i));
    }
    number_entries(q_node_new_experience_table(n[y]));
    number_entries(q_node_get_table(n[z]));
    return domain;
}

// The tables of family() are not asked for.
owned_domain bare_family() {
    owned_domain domain(q_domain_new());
    q_node_t parent = new_chance(domain.get(), "a", 2);
    new_chance(domain.get(), "c", 3, {parent});
    new_continuous(domain.get(), "y", {parent, new_continuous(domain.get(), "x")});
    return domain;
}

owned_domain decision_problem() {
    owned_domain domain(q_domain_new());
    q_node_t d = new_node(domain.get(), "dd");
    q_node_t u = new_node(domain.get(), "uo");
    q_node_add_parent(u, d);
    number_entries(q_node_get_table(u));
    new_chance(domain.get(), "a", 2);
    return domain;
}

owned_domain numbered() {
    owned_domain domain(q_domain_new());
    q_node_set_subtype(new_chance(domain.get(), "a", 3), q_subtype_interval);
    return domain;
}

// So many nodes that names are found by an index, which is not made yet; the last one has no name.
owned_domain crowd() {
    owned_domain domain(q_domain_new());
    for (int i = 0; i < 12; ++i) {
        const std::string name = "node_" + std::to_string(i);
        q_node_set_name(new_node(domain.get(), "cd"), name.c_str());
    }
    new_node(domain.get(), "cd");
    return domain;
}

owned_domain indexed_crowd() {
    owned_domain domain = crowd();
    EXPECT_NE(q_domain_get_node_by_name(domain.get(), "node_3"), nullptr);
    return domain;
}

owned_domain nothing() { return nullptr; }
owned_domain empty() { return owned_domain(q_domain_new()); }

q_status_t reorder(q_domain_t d) {
    const char* const order[] = {"yes", "no", nullptr};
    return q_node_reorder_states(node_at(d, a), order);
}

const char long_text[] = "a text that is too long for any place within an object";

const std::vector<allocating_call> calls{
    {"new domain", nothing,
     [](q_domain_t) {
         q_domain_t made = q_domain_new();
         const q_status_t status = outcome(made);
         if (made != nullptr) q_domain_delete(made);
         return status;
     }},
    {"new chance node", empty, [](q_domain_t d) { return outcome(new_node(d, "cc")); }},
    {"new decision", empty, [](q_domain_t d) { return outcome(new_node(d, "dd")); }},
    {"new utility", empty, [](q_domain_t d) { return outcome(new_node(d, "uo")); }},
    {"new function", family, [](q_domain_t d) { return outcome(new_node(d, "fd")); }},
    {"log file", empty, [](q_domain_t d) { return q_domain_set_log_file(d, "/dev/null", 0); }},
    {"domain attribute", family, [](q_domain_t d) { return q_domain_set_attribute(d, "key", long_text); }},
    {"domain attribute again", family,
     [](q_domain_t d) { return q_domain_set_attribute(d, "made", long_text); }},
    {"name lookup", crowd,
     [](q_domain_t d) {
         EXPECT_EQ(q_domain_get_node_by_name(d, "node_7"), node_at(d, 7));
         EXPECT_EQ(q_error_code(), q_error_none);
         return q_error_code();
     },
     true},
    {"name", crowd, [](q_domain_t d) { return q_node_set_name(node_at(d, 2), "C29"); }, true},
    {"name in an index", indexed_crowd, [](q_domain_t d) { return q_node_set_name(node_at(d, 2), "C30"); },
     true},
    {"automatic name", indexed_crowd, [](q_domain_t d) { return outcome(q_node_get_name(node_at(d, 12))); },
     true},
    {"label", family, [](q_domain_t d) { return q_node_set_label(node_at(d, c), long_text); }},
    {"attribute", family,
     [](q_domain_t d) { return q_node_set_attribute(node_at(d, c), "third", long_text); }},
    {"attribute again", family,
     [](q_domain_t d) { return q_node_set_attribute(node_at(d, c), "first", "3"); }},
    {"attribute removed", family,
     [](q_domain_t d) { return q_node_set_attribute(node_at(d, c), "first", nullptr); }},
    {"user data", family, [](q_domain_t d) { return q_node_set_user_data(node_at(d, c), d); }},
    {"position", family, [](q_domain_t d) { return q_node_set_position(node_at(d, c), 3, 4); }},
    {"category", decision_problem,
     [](q_domain_t d) { return q_node_set_category(node_at(d, 2), q_category_decision); }},
    {"subtype", family, [](q_domain_t d) { return q_node_set_subtype(node_at(d, a), q_subtype_boolean); }},
    {"more states of a parent", family,
     [](q_domain_t d) { return q_node_set_number_of_states(node_at(d, a), 4); }},
    {"more numbered states", family,
     [](q_domain_t d) { return q_node_set_number_of_states(node_at(d, b), 5); }},
    {"more states of a child", family,
     [](q_domain_t d) { return q_node_set_number_of_states(node_at(d, c), 7); }},
    {"fewer states", family, [](q_domain_t d) { return q_node_set_number_of_states(node_at(d, b), 2); },
     true},
    {"fewer states of a parent", family,
     [](q_domain_t d) { return q_node_set_number_of_states(node_at(d, a), 1); }, true},
    {"state label", family, [](q_domain_t d) { return q_node_set_state_label(node_at(d, a), 1, long_text); }},
    {"first state label", family,
     [](q_domain_t d) { return q_node_set_state_label(node_at(d, c), 1, "one"); }},
    {"first state value", numbered,
     [](q_domain_t d) { return q_node_set_state_value(node_at(d, 0), 1, 2.0); }},
    {"reordered states", family, reorder},
    {"discrete parent", family,
     [](q_domain_t d) { return q_node_add_parent(node_at(d, c), node_at(d, other_b)); }},
    {"discrete parent of densities", family,
     [](q_domain_t d) { return q_node_add_parent(node_at(d, y), node_at(d, b)); }},
    {"continuous parent", family,
     [](q_domain_t d) { return q_node_add_parent(node_at(d, y), node_at(d, z)); }},
    {"first parent", family, [](q_domain_t d) { return q_node_add_parent(node_at(d, z), node_at(d, b)); }},
    {"parent of a function", family,
     [](q_domain_t d) { return q_node_add_parent(node_at(d, f), node_at(d, y)); }},
    {"removed parent", family,
     [](q_domain_t d) { return q_node_remove_parent(node_at(d, c), node_at(d, a)); }, true},
    {"removed continuous parent", family,
     [](q_domain_t d) { return q_node_remove_parent(node_at(d, y), node_at(d, x)); }, true},
    {"removed parent of densities", family,
     [](q_domain_t d) { return q_node_remove_parent_keep_state(node_at(d, y), node_at(d, a), 1); }, true},
    {"switched parent", family,
     [](q_domain_t d) { return q_node_switch_parent(node_at(d, c), node_at(d, b), node_at(d, other_b)); }},
    {"clone", family, [](q_domain_t d) { return outcome(q_node_clone(node_at(d, c))); }},
    {"clone of a parent", family, [](q_domain_t d) { return outcome(q_node_clone(node_at(d, b))); }},
    {"clone with densities", family, [](q_domain_t d) { return outcome(q_node_clone(node_at(d, y))); }},
    {"deletion of a parent", family, [](q_domain_t d) { return q_node_delete(node_at(d, a)); }, true},
    {"deletion of a child", family, [](q_domain_t d) { return q_node_delete(node_at(d, y)); }},
    {"deletion from an index", indexed_crowd, [](q_domain_t d) { return q_node_delete(node_at(d, 4)); }},
    {"table", bare_family, [](q_domain_t d) { return outcome(q_node_get_table(node_at(d, 1))); }},
    {"table numbers", bare_family,
     [](q_domain_t d) {
         q_table_t table = q_node_get_table(node_at(d, 2));
         return table == nullptr ? q_error_code() : outcome(q_table_get_data(table));
     }},
    {"experience", bare_family,
     [](q_domain_t d) { return outcome(q_node_new_experience_table(node_at(d, 1))); }},
    {"fading", bare_family, [](q_domain_t d) { return outcome(q_node_new_fading_table(node_at(d, 1))); }},
    {"intercept", bare_family, [](q_domain_t d) { return q_node_set_cg_intercept(node_at(d, 3), 1, 2.5); }},
    {"coefficient", bare_family,
     [](q_domain_t d) { return q_node_set_cg_coefficient(node_at(d, 3), node_at(d, 2), 1, 2.5); }},
    {"variance", bare_family, [](q_domain_t d) { return q_node_set_cg_variance(node_at(d, 3), 0, 2.5); }},
    {"reading an intercept", bare_family,
     [](q_domain_t d) { return outcome(q_node_get_cg_intercept(node_at(d, 3), 1), -1.0); }},
    {"reading a moment", bare_family,
     [](q_domain_t d) {
         q_table_t table = q_node_get_table(node_at(d, 2));
         return table == nullptr ? q_error_code()
                                 : outcome(q_table_get_variance(table, 0, node_at(d, 2)), -1.0);
     }},
    {"ancestors", family,
     [](q_domain_t d) {
         const q_node_t* found = q_node_get_ancestors(node_at(d, y));
         EXPECT_TRUE(found == nullptr ||
                     (found[0] == node_at(d, y) && found[2] == node_at(d, x) && !found[3]));
         return outcome(found);
     }},
    {"finding", family, [](q_domain_t d) { return q_node_enter_finding(node_at(d, c), 2, 0.5); }},
    {"finding on an observed node", family,
     [](q_domain_t d) { return q_node_enter_finding(node_at(d, a), 0, 0.5); }},
    {"selection", family, [](q_domain_t d) { return q_node_select_state(node_at(d, b), 1); }},
    {"retraction", family, [](q_domain_t d) { return q_domain_retract_findings(d); }},
};

class lack_of_memory : public testing::TestWithParam<allocating_call> {};

TEST_P(lack_of_memory, leaves_everything_as_it_was) {
    if (!allocation_faults::are_possible())
        GTEST_SKIP() << "another tool has replaced the operators new and delete";
    expect_survives_lack_of_memory(GetParam());
}

INSTANTIATE_TEST_SUITE_P(calls, lack_of_memory, testing::ValuesIn(calls), [](const auto& tested) {
    std::string name = tested.param.name;
    for (char& letter : name)
        if (letter == ' ') letter = '_';
    return name;
});

}  // namespace
