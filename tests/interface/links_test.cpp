// Links: which are allowed, what they change, and walks along them.
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"
#include "scenarios.h"

namespace {

struct link_case {
    std::vector<const char*> nodes;
    links present;
    std::pair<std::size_t, std::size_t> added;
    q_error_t code;
};

void expect_codes(const std::vector<link_case>& cases) {
    for (const link_case& tested : cases) {
        SCOPED_TRACE("row " + std::to_string(&tested - cases.data()));
        const network_builder build = [&] { return network(tested.nodes, tested.present); };
        const operation add = [&](q_domain_t d) {
            return q_node_add_parent(node_at(d, tested.added.second), node_at(d, tested.added.first));
        };
        if (tested.code == q_error_none)
            EXPECT_EQ(add(build().get()), q_error_none);
        else
            expect_refusals(build, {{"link", tested.code, add}});
    }
}

TEST(links, kinds_and_cycles) {
    const q_error_t usage = q_error_usage;
    const q_error_t cyclic = q_error_cyclic_network;
    expect_codes({
        {{"cd", "cd"}, {{0, 1}}, {0, 1}, usage},
        {{"cd", "uo"}, {}, {1, 0}, usage},
        {{"dd", "uo"}, {}, {1, 0}, usage},
        {{"uo", "uo"}, {}, {1, 0}, usage},
        {{"uo"}, {}, {0, 0}, usage},
        {{"cc", "cd"}, {}, {0, 1}, usage},
        {{"cd", "cc"}, {}, {0, 1}, q_error_none},
        {{"cc", "cc"}, {}, {0, 1}, q_error_none},
        {{"cc", "fo"}, {}, {0, 1}, q_error_none},
        {{"cc", "fd"}, {}, {0, 1}, q_error_none},
        {{"uo", "fo"}, {}, {0, 1}, q_error_none},
        {{"fo", "cd"}, {}, {0, 1}, q_error_none},
        {{"fo", "uo"}, {}, {0, 1}, q_error_none},
        {{"cd"}, {}, {0, 0}, cyclic},
        {{"cd", "cd"}, {{0, 1}}, {1, 0}, cyclic},
        {{"cd", "cd", "cd", "cd"}, {{0, 1}, {0, 2}, {1, 3}, {2, 3}}, {3, 0}, cyclic},
        {{"cd", "cd", "cd", "cd"}, {{0, 1}, {0, 2}, {1, 3}, {2, 3}}, {0, 3}, q_error_none},
        {{"fo", "fo", "fo"}, {{0, 1}, {1, 2}}, {2, 0}, cyclic},
    });
    const owned_domain first = network({"cd"}, {});
    const owned_domain second = network({"cd"}, {});
    EXPECT_EQ(q_node_add_parent(node_at(first.get(), 0), node_at(second.get(), 0)), q_error_usage);
}

TEST(links, functions_may_not_depend_on_themselves_nor_decisions_on_functions) {
    const q_error_t cyclic = q_error_cyclic_functional_dependency;
    const q_error_t dependent = q_error_functional_dependency;
    expect_codes({
        // A function of the belief in 0, which evidence on 1 changes, as the function does.
        {{"cd", "cd", "fd"}, {{0, 1}, {2, 1}}, {0, 2}, cyclic},
        {{"cd", "cd", "fd"}, {{0, 1}}, {0, 2}, q_error_none},
        {{"dd", "uo", "cd", "fd"}, {{0, 1}, {0, 2}, {3, 2}}, {1, 3}, cyclic},
        {{"dd", "uo", "cd", "fd"}, {{0, 1}, {3, 2}}, {1, 3}, dependent},
        // Variables joined already: nothing new depends on the function.
        {{"cd", "cd", "cd", "fo"}, {{2, 0}, {2, 1}}, {0, 1}, q_error_none},
        {{"cd", "cd", "cd", "fo", "dd"}, {{2, 0}, {2, 1}}, {0, 1}, q_error_none},
        // A function computed from one variable decides on another: these two may not be joined.
        {{"cd", "fo", "cd"}, {{0, 1}, {1, 2}}, {0, 2}, cyclic},
        {{"cd", "cd", "fo"}, {{0, 1}, {0, 2}}, {2, 1}, cyclic},
        {{"cd", "fo", "cd", "cd"}, {{0, 1}, {1, 2}, {0, 3}}, {3, 2}, cyclic},
        {{"cd", "fo", "cd", "cd"}, {{0, 1}, {1, 2}}, {2, 3}, q_error_none},
        // A second way into a function.
        {{"cd", "fo", "fo"}, {{0, 1}, {1, 2}}, {0, 2}, q_error_none},
        {{"cd", "fo", "fo", "dd"}, {{0, 1}, {1, 2}}, {0, 2}, q_error_none},
        // With decisions, no variable may depend on a function of beliefs.
        {{"dd", "cd", "fo", "cd"}, {{2, 3}}, {1, 2}, dependent},
        {{"dd", "cd", "fo", "fo"}, {{2, 3}}, {1, 2}, q_error_none},
        {{"dd", "cd", "fo", "fo", "cd"}, {{2, 3}, {3, 4}}, {1, 2}, dependent},
        {{"dd", "cd", "fo", "cd"}, {{1, 2}}, {2, 3}, dependent},
        {{"dd", "cd", "fo", "fo"}, {{1, 2}}, {2, 3}, q_error_none},
        {{"dd", "cd", "fo", "uo"}, {{1, 2}}, {2, 3}, dependent},
        {{"dd", "cd", "fd"}, {}, {1, 2}, dependent},
        {{"dd", "uo", "fo"}, {{0, 1}}, {1, 2}, q_error_none},
        {{"dd", "uo", "fo", "cd"}, {{0, 1}, {2, 3}}, {1, 2}, dependent},
        {{"dd", "fo", "cd"}, {}, {1, 2}, q_error_none},
        {{"dd", "uo", "fo", "fo", "cd"}, {{0, 1}, {1, 2}, {2, 3}}, {3, 4}, q_error_none},
        {{"dd", "uo", "fo", "fo", "cd"}, {{0, 1}, {1, 2}, {2, 3}, {0, 4}}, {3, 4}, cyclic},
        // Nothing but functions.
        {{"fd", "fo", "fd"}, {{0, 1}, {1, 2}}, {0, 2}, q_error_none},
    });
    // A switched link is not counted twice: the old one is a way that the new one does not have.
    const owned_domain domain = network({"fd", "fd", "cd"}, {{0, 2}, {0, 1}});
    const std::vector<q_node_t> n = nodes_of(domain.get());
    EXPECT_EQ(q_node_add_parent(n[2], n[1]), cyclic);
    EXPECT_EQ(q_node_switch_parent(n[2], n[0], n[1]), q_error_none);
    EXPECT_EQ(q_node_switch_parent(n[2], n[1], n[0]), q_error_none);
}

TEST(links, only_like_nodes_can_be_switched) {
    const auto first_as = [](q_domain_t d, q_subtype_t subtype) {
        q_node_set_subtype(node_at(d, 0), subtype);
    };
    const auto both_as = [&](q_domain_t d, q_subtype_t subtype) {
        first_as(d, subtype);
        q_node_set_subtype(node_at(d, 1), subtype);
    };
    const struct {
        const char* name;
        std::function<void(q_domain_t)> prepare;
        q_error_t code;
    } cases[] = {
        {"as they are", [](q_domain_t) {}, q_error_none},
        {"number of states", [](q_domain_t d) { q_node_set_number_of_states(node_at(d, 1), 3); },
         q_error_usage},
        {"category", [](q_domain_t d) { q_node_set_category(node_at(d, 1), q_category_decision); },
         q_error_usage},
        {"subtype", [&](q_domain_t d) { first_as(d, q_subtype_number); }, q_error_usage},
        {"label", [](q_domain_t d) { q_node_set_state_label(node_at(d, 1), 1, "x"); }, q_error_usage},
        {"empty label", [](q_domain_t d) { q_node_set_state_label(node_at(d, 1), 1, ""); }, q_error_none},
        {"label of numbers",
         [&](q_domain_t d) {
             both_as(d, q_subtype_number);
             q_node_set_state_label(node_at(d, 1), 1, "x");
         },
         q_error_none},
        {"boolean labels",
         [&](q_domain_t d) {
             both_as(d, q_subtype_boolean);
             q_node_set_state_label(node_at(d, 1), 1, "x");
         },
         q_error_none},
        {"one without values",
         [&](q_domain_t d) {
             both_as(d, q_subtype_interval);
             q_node_set_state_value(node_at(d, 1), 1, 0);
         },
         q_error_usage},
        {"last bound",
         [&](q_domain_t d) {
             both_as(d, q_subtype_interval);
             q_node_set_state_value(node_at(d, 0), 1, 0);
             q_node_set_state_value(node_at(d, 1), 1, 0);
             q_node_set_state_value(node_at(d, 1), 2, 4);
         },
         q_error_usage},
        {"equal values",
         [&](q_domain_t d) {
             both_as(d, q_subtype_number);
             for (std::size_t i = 0; i < 2; ++i) q_node_set_state_value(node_at(d, i), 1, 4);
         },
         q_error_none},
        {"no number",
         [&](q_domain_t d) {
             both_as(d, q_subtype_number);
             for (std::size_t i = 0; i < 2; ++i) q_node_set_state_value(node_at(d, i), 1, std::nan(""));
         },
         q_error_usage},
        {"parent already", [](q_domain_t d) { q_node_add_parent(node_at(d, 2), node_at(d, 1)); },
         q_error_usage},
        {"not a parent", [](q_domain_t d) { q_node_remove_parent(node_at(d, 2), node_at(d, 0)); },
         q_error_usage},
        {"cycle", [](q_domain_t d) { q_node_add_parent(node_at(d, 1), node_at(d, 2)); },
         q_error_cyclic_network},
    };
    for (const auto& tested : cases) {
        const network_builder build = [&] {
            owned_domain domain(q_domain_new());
            for (const char* name : {"a", "b", "c"}) new_chance(domain.get(), name, 2);
            q_node_add_parent(node_at(domain.get(), 2), node_at(domain.get(), 0));
            tested.prepare(domain.get());
            return domain;
        };
        const operation change = [](q_domain_t d) {
            return q_node_switch_parent(node_at(d, 2), node_at(d, 0), node_at(d, 1));
        };
        if (tested.code == q_error_none)
            EXPECT_EQ(change(build().get()), q_error_none) << tested.name;
        else
            expect_refusals(build, {{tested.name, tested.code, change}});
    }
}

TEST(links, refused_removals_and_category_changes) {
    const auto build = [] { return network({"cd", "cd", "cc", "fd", "cc"}, {{0, 1}, {4, 2}, {0, 2}}); };
    const auto experienced = [&] {
        owned_domain domain = build();
        q_node_new_experience_table(node_at(domain.get(), 0));
        q_node_new_fading_table(node_at(domain.get(), 1));
        return domain;
    };
    const q_error_t usage = q_error_usage;
    const auto at = node_at;
    expect_refusals(
        build, {
                   {"no link", usage, [&](q_domain_t d) { return q_node_remove_parent(at(d, 0), at(d, 1)); }},
                   {"state beyond", usage,
                    [&](q_domain_t d) { return q_node_remove_parent_keep_state(at(d, 1), at(d, 0), 1); }},
                   {"state of continuous", usage,
                    [&](q_domain_t d) { return q_node_remove_parent_keep_state(at(d, 2), at(d, 4), 0); }},
                   {"no link, state", usage,
                    [&](q_domain_t d) { return q_node_remove_parent_keep_state(at(d, 0), at(d, 1), 0); }},
                   {"utility", usage,
                    [&](q_domain_t d) { return q_node_set_category(at(d, 0), q_category_utility); }},
                   {"no category", usage, [&](q_domain_t d) { return q_node_set_category(at(d, 0), 0); }},
                   {"continuous", usage,
                    [&](q_domain_t d) { return q_node_set_category(at(d, 2), q_category_decision); }},
                   {"function", usage,
                    [&](q_domain_t d) { return q_node_set_category(at(d, 3), q_category_chance); }},
                   {"beside continuous", q_error_cg_limids_not_supported,
                    [&](q_domain_t d) { return q_node_set_category(at(d, 0), q_category_decision); }},
               });
    expect_refusals(experienced,
                    {
                        {"experience", usage,
                         [&](q_domain_t d) { return q_node_set_category(at(d, 0), q_category_decision); }},
                        {"fading", usage,
                         [&](q_domain_t d) { return q_node_set_category(at(d, 1), q_category_decision); }},
                    });
}

// What a change of category counts for: the rules for nodes that join later see the new category.
TEST(links, category_changes_back_and_forth) {
    const owned_domain domain = network({"cd"}, {});
    q_node_t node = node_at(domain.get(), 0);
    EXPECT_EQ(q_node_set_category(node, q_category_decision), q_error_none);
    EXPECT_EQ(q_domain_new_node(domain.get(), q_category_chance, q_kind_continuous), nullptr);
    EXPECT_STREQ(q_node_get_name(node), "D1");
    EXPECT_EQ(q_node_set_category(node, q_category_chance), q_error_none);
    EXPECT_NE(q_domain_new_node(domain.get(), q_category_chance, q_kind_continuous), nullptr);
    EXPECT_EQ(q_node_set_category(node, q_category_chance), q_error_none);
}

TEST(links, lists_keep_their_order) {
    const owned_domain domain = network({"cd", "cd", "cd", "cd", "cd"}, {{0, 4}, {1, 4}, {2, 4}, {0, 3}});
    const std::vector<q_node_t> n = nodes_of(domain.get());
    using list = std::vector<q_node_t>;
    EXPECT_EQ(listed(q_node_get_parents(n[0])), list{});
    EXPECT_EQ(listed(q_node_get_children(n[0])), (list{n[4], n[3]}));
    EXPECT_EQ(q_node_switch_parent(n[4], n[1], n[3]), q_error_none);
    EXPECT_EQ(listed(q_node_get_parents(n[4])), (list{n[0], n[3], n[2]}));
    EXPECT_EQ(listed(q_node_get_children(n[1])), list{});
    EXPECT_EQ(listed(q_node_get_children(n[3])), list{n[4]});
    EXPECT_EQ(q_node_remove_parent(n[4], n[0]), q_error_none);
    EXPECT_EQ(listed(q_node_get_parents(n[4])), (list{n[3], n[2]}));
    EXPECT_EQ(listed(q_node_get_children(n[0])), list{n[3]});
    q_node_t clone = q_node_clone(n[4]);
    EXPECT_EQ(listed(q_node_get_parents(clone)), (list{n[3], n[2]}));
    EXPECT_EQ(listed(q_node_get_children(n[2])), (list{n[4], clone}));
    EXPECT_EQ(q_node_delete(n[3]), q_error_none);
    EXPECT_EQ(listed(q_node_get_parents(clone)), list{n[2]});
    EXPECT_EQ(listed(q_node_get_children(n[0])), list{});
}

TEST(links, relatives_are_found_nearest_first) {
    // 0 -> 1 -> 3 -> 5, 0 -> 2 -> 3, 4 -> 5, 0 -> 5
    const owned_domain domain = network({"cd", "cd", "cd", "cd", "cd", "cd", "cd"},
                                        {{2, 3}, {0, 1}, {0, 2}, {1, 3}, {3, 5}, {4, 5}, {0, 5}});
    const std::vector<q_node_t> n = nodes_of(domain.get());
    using list = std::vector<q_node_t>;
    EXPECT_EQ(listed(q_node_get_ancestors(n[5])), (list{n[5], n[3], n[4], n[0], n[2], n[1]}));
    EXPECT_EQ(listed(q_node_get_descendants(n[0])), (list{n[0], n[1], n[2], n[5], n[3]}));
    EXPECT_EQ(listed(q_node_get_ancestors(n[0])), list{n[0]});
    EXPECT_EQ(listed(q_node_get_descendants(n[6])), list{n[6]});
}

TEST(links, a_clone_has_the_properties_but_no_life_of_the_original) {
    const owned_domain domain(q_domain_new());
    q_node_t parent = new_chance(domain.get(), "p", 2);
    q_node_t original = new_chance(domain.get(), "a", 3, {parent});
    new_chance(domain.get(), "b", 2, {original});
    q_node_set_subtype(original, q_subtype_interval);
    q_node_set_state_value(original, 1, 2.5);
    q_node_set_state_label(original, 2, "two");
    q_node_set_label(original, "label");
    q_node_set_position(original, 3, 4);
    q_node_set_attribute(original, "k", "v");
    q_node_set_user_data(original, parent);
    q_node_select_state(original, 1);
    q_node_new_experience_table(original);
    q_node_new_fading_table(original);
    set_data(q_node_get_table(original), {1, 2, 3, 4, 5, 6});

    q_node_t clone = q_node_clone(original);
    EXPECT_EQ(q_node_get_subtype(clone), q_subtype_interval);
    EXPECT_EQ(q_node_get_state_value(clone, 1), 2.5);
    EXPECT_STREQ(q_node_get_state_label(clone, 2), "two");
    EXPECT_STREQ(q_node_get_label(clone), "label");
    EXPECT_STREQ(q_node_get_attribute(clone, "k"), "v");
    EXPECT_STREQ(q_node_get_name(clone), "C4");
    EXPECT_EQ(listed(q_table_get_nodes(q_node_get_table(clone))), (std::vector<q_node_t>{parent, clone}));
    EXPECT_EQ(data_of(q_node_get_table(clone)), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(*q_node_get_children(clone), nullptr);
    EXPECT_EQ(q_node_get_user_data(clone), nullptr);
    EXPECT_EQ(q_node_get_selected_state(clone), -1);
    EXPECT_EQ(q_node_get_experience_table(clone), nullptr);
    EXPECT_EQ(q_node_get_fading_table(clone), nullptr);
    q_node_set_number_of_states(clone, 2);
    EXPECT_EQ(q_node_get_number_of_states(original), 3u);
    EXPECT_EQ(data_of(q_node_get_table(original)), (std::vector<double>{1, 2, 3, 4, 5, 6}));
}

TEST(links, what_uncompiles_a_domain) {
    // 0 -> 2, 1 like 0, and a real-valued function 3 of 0 that came after compiling
    const auto build = [] {
        owned_domain domain = network({"cd", "cd", "cd"}, {{0, 2}});
        for (q_node_t node : nodes_of(domain.get())) q_node_set_number_of_states(node, 2);
        for (std::size_t i = 0; i < 2; ++i) q_node_set_state_label(node_at(domain.get(), i), 1, "one");
        EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
        q_node_t function = q_domain_new_node(domain.get(), q_category_function, q_kind_other);
        EXPECT_EQ(q_node_add_parent(function, node_at(domain.get(), 0)), q_error_none);
        EXPECT_EQ(q_domain_is_compiled(domain.get()), 1u);
        return domain;
    };
    const auto at = node_at;
    const auto order = [&](q_domain_t d, const char* first, const char* second) {
        const char* const labels[] = {first, second, nullptr};
        return q_node_reorder_states(at(d, 0), labels);
    };
    const struct {
        const char* name;
        bool stays;
        operation call;
    } cases[] = {
        {"new node", false,
         [](q_domain_t d) { return !q_domain_new_node(d, q_category_chance, q_kind_discrete); }},
        {"new function", true,
         [](q_domain_t d) { return !q_domain_new_node(d, q_category_function, q_kind_other); }},
        {"new discrete function", false,
         [](q_domain_t d) { return !q_domain_new_node(d, q_category_function, q_kind_discrete); }},
        {"category", false, [&](q_domain_t d) { return q_node_set_category(at(d, 1), q_category_decision); }},
        {"same category", true,
         [&](q_domain_t d) { return q_node_set_category(at(d, 1), q_category_chance); }},
        {"subtype", true, [&](q_domain_t d) { return q_node_set_subtype(at(d, 0), q_subtype_boolean); }},
        {"number of states", false, [&](q_domain_t d) { return q_node_set_number_of_states(at(d, 1), 3); }},
        {"same number", true, [&](q_domain_t d) { return q_node_set_number_of_states(at(d, 1), 2); }},
        {"order", false, [&](q_domain_t d) { return order(d, "one", ""); }},
        {"same order", true, [&](q_domain_t d) { return order(d, "", "one"); }},
        {"label", true, [&](q_domain_t d) { return q_node_set_state_label(at(d, 1), 0, "zero"); }},
        {"name", true, [&](q_domain_t d) { return q_node_set_name(at(d, 1), "name"); }},
        {"table", true, [&](q_domain_t d) { return q_node_touch_table(at(d, 1)); }},
        {"parent", false, [&](q_domain_t d) { return q_node_add_parent(at(d, 2), at(d, 1)); }},
        {"parent of function", true, [&](q_domain_t d) { return q_node_add_parent(at(d, 3), at(d, 1)); }},
        {"refused parent", true, [&](q_domain_t d) { return !q_node_add_parent(at(d, 0), at(d, 2)); }},
        {"removal", false, [&](q_domain_t d) { return q_node_remove_parent(at(d, 2), at(d, 0)); }},
        {"removal from function", true,
         [&](q_domain_t d) { return q_node_remove_parent(at(d, 3), at(d, 0)); }},
        {"switch", false, [&](q_domain_t d) { return q_node_switch_parent(at(d, 2), at(d, 0), at(d, 1)); }},
        {"clone", false, [&](q_domain_t d) { return !q_node_clone(at(d, 1)); }},
        {"clone of function", true, [&](q_domain_t d) { return !q_node_clone(at(d, 3)); }},
        {"deletion", false, [&](q_domain_t d) { return q_node_delete(at(d, 1)); }},
        {"deletion of function", true, [&](q_domain_t d) { return q_node_delete(at(d, 3)); }},
    };
    for (const auto& tested : cases) {
        const owned_domain domain = build();
        EXPECT_EQ(tested.call(domain.get()), 0) << tested.name;
        EXPECT_EQ(q_domain_is_compiled(domain.get()), tested.stays ? 1u : 0u) << tested.name;
    }
}

}  // namespace
