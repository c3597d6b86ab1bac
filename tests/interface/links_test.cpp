// Links: which are allowed, what they change, and walks along them.
#include <map>
#include <sstream>

#include "scenarios.h"

using namespace scenarios;

namespace {

constexpr q_error_t none = q_error_none, usage = q_error_usage, loop = q_error_cyclic_network,
                    cyclic = q_error_cyclic_functional_dependency, dependent = q_error_functional_dependency;

// Each row: the code, the nodes, the links, and the link or the node that is to be added.
const char* const additions = R"(
    usage cd,cd 01 01; usage cd,uo - 10; usage dd,uo - 10; usage uo,uo - 10; loop uo - 00; usage cc,cd - 01; none cd,cc - 01;
    none cc,cc - 01; none cc,fo - 01; none cc,fd - 01; none uo,fo - 01; none fo,cd - 01; none fo,uo - 01; loop cd - 00;
    loop cd,cd 01 10; loop cd,cd,cd,cd 01,02,13,23 30; none cd,cd,cd,cd 01,02,13,23 03; loop fo,fo,fo 01,12 20;
 A function of the belief in 0, which evidence on 1 changes, as the function does:
    cyclic cd,cd,fd 01,21 02; none cd,cd,fd 01 02; cyclic dd,uo,cd,fd 01,02,32 13; dependent dd,uo,cd,fd 01,32 13;
 variables joined already, where nothing new depends on the function:
    none cd,cd,cd,fo 20,21 01; none cd,cd,cd,fo,dd 20,21 01;
 a function computed from one variable that decides on another, so that these two may not be joined:
    cyclic cd,fo,cd 01,12 02; cyclic cd,cd,fo 01,02 21; cyclic cd,fo,cd,cd 01,12,03 32; none cd,fo,cd,cd 01,12 23;
 a second way into a function, and nothing but functions:
    none cd,fo,fo 01,12 02; none cd,fo,fo,dd 01,12 02; none fd,fo,fd 01,12 02;
 with decisions, no variable may depend on a function of beliefs:
    dependent dd,cd,fo,cd 23 12; none dd,cd,fo,fo 23 12; dependent dd,cd,fo,fo,cd 23,34 12; dependent dd,cd,fo,cd 12 23;
    none dd,cd,fo,fo 12 23; dependent dd,cd,fo,uo 12 23; dependent dd,cd,fd - 12; none dd,uo,fo 01 12;
    dependent dd,uo,fo,cd 01,23 12; none dd,fo,cd - 12; none dd,uo,fo,fo,cd 01,12,23 34; cyclic dd,uo,fo,fo,cd 01,12,23,04 34;
 nodes that do not go together:
    none cd,dd,uo,fo - cd; cg cd,dd - cc; cg uo - cc; cg cd,cc - dd; cg cc - uo; cg - - dc; none cc - fo; none dd - fo;
 a function with a variable among its parents and one among itself and its descendants, and then not quite:
    cyclic cd,fo,cd 01,12 dd; cyclic cd,fo,fo,cd 01,12,23 uo; cyclic cd,fd 01 uo; none cd,fo,cd 01,12 cd; none cd,fo,fo 01,12 dd;
    none fo,cd 01 dd; none fd - dd; none dd,cd,fo 12 uo;)";

TEST(links, and_nodes_that_may_be_added) {
    const std::map<std::string, q_error_t> codes{
        {"none", none},     {"usage", usage},         {"loop", loop},
        {"cyclic", cyclic}, {"dependent", dependent}, {"cg", q_error_cg_limids_not_supported}};
    std::istringstream rows(additions);
    for (std::string row; std::getline(rows >> std::ws, row, ';');) {
        SCOPED_TRACE(row);
        row.erase(0, row.rfind('\n') + 1);
        std::istringstream words(row);
        std::string code, members, present, added;
        words >> code >> members >> present >> added;
        for (std::string* list : {&members, &present})
            std::ranges::replace_if(
                *list, [](char c) { return c == ',' || c == '-'; }, ' ');
        const network_builder build = [&] { return network(members, present); };
        const bool link = added[0] < 'a';
        expect_code(build, codes.at(code),
                    link ? call(q_node_add_parent, added[1] - '0', added[0] - '0')
                         : call(new_node, added.c_str()));
        // Turning a variable into the first decision is no way around.
        if (code == "cyclic" && !link)
            expect_code(build, cyclic, call(q_node_set_category, 0, q_category_decision));
    }
    const owned_domain first = network("cd"), second = network("cd");
    EXPECT_EQ(q_node_add_parent(node_at(first.get(), 0), node_at(second.get(), 0)), usage);
    // A switched link is not counted twice: the old one is a way that the new one does not have.
    const owned_domain domain = network("fd fd cd", "02 01");
    const nodes n = nodes_of(domain.get());
    EXPECT_EQ(q_node_add_parent(n[2], n[1]), cyclic);
    EXPECT_EQ(q_node_switch_parent(n[2], n[0], n[1]), none);
    EXPECT_EQ(q_node_switch_parent(n[2], n[1], n[0]), none);
}

TEST(links, only_like_nodes_can_be_switched) {
    const auto subtype = q_node_set_subtype;
    const auto label = q_node_set_state_label;
    const int number = q_subtype_number, boolean = q_subtype_boolean;
    const std::pair<q_error_t, std::vector<tested_call>> cases[] = {
        {none, {}},
        {usage, {call(q_node_set_number_of_states, 1, 3)}},
        {usage, {call(q_node_set_category, 1, q_category_decision)}},
        {usage, {call(label, 1, 1, "x")}},
        {none, {call(label, 0, 1, "x"), call(label, 1, 1, "x")}},
        {usage, {call(subtype, 0, number), call(subtype, 1, q_subtype_interval)}},
        {none, {call(subtype, 0, boolean), call(subtype, 1, boolean), call(label, 0, 1, "x")}},
        {none, {call(subtype, 0, number), call(subtype, 1, number), call(label, 0, 1, "x")}},
        {usage, {call(subtype, 0, number), call(subtype, 1, number), call(q_node_set_state_value, 0, 1, 2)}},
        {usage, {call(q_node_add_parent, 2, 1)}},
        {usage, {call(q_node_remove_parent, 2, 0)}},
        {loop, {call(q_node_add_parent, 1, 2)}}};
    for (const auto& tested : cases) {
        const network_builder build = [&] {
            owned_domain domain = network("cd cd cd", "02");
            const nodes n = nodes_of(domain.get());
            for (q_node_t node : n) q_node_set_number_of_states(node, 2);
            for (const tested_call& change : tested.second) EXPECT_EQ(change(domain.get(), n), none);
            return domain;
        };
        expect_code(build, tested.first, call(q_node_switch_parent, 2, 0, 1), std::size_t(&tested - cases));
    }
}

TEST(links, refused_removals_and_category_changes) {
    const auto build = [] { return network("cd cd cc fd cc", "01 42 02"); };
    const auto category = q_node_set_category;
    const auto remove_but = q_node_remove_parent_keep_state;
    expect_refusals(build, usage, call(q_node_remove_parent, 0, 1), call(remove_but, 1, 0, 1),
                    call(remove_but, 2, 4, 0), call(remove_but, 0, 1, 0),
                    call(category, 0, q_category_utility), call(category, 0, 0),
                    call(category, 2, q_category_decision), call(category, 3, q_category_chance));
    expect_refusals(build, q_error_cg_limids_not_supported, call(category, 0, q_category_decision));
    const auto experienced = [] {
        owned_domain domain = network("cd cd");
        q_node_new_experience_table(node_at(domain.get(), 0));
        q_node_new_fading_table(node_at(domain.get(), 1));
        return domain;
    };
    expect_refusals(experienced, usage, call(category, 0, q_category_decision),
                    call(category, 1, q_category_decision));
    // The rules for nodes that join later see the new category.
    const owned_domain domain = network("cd");
    q_node_t node = node_at(domain.get(), 0);
    EXPECT_EQ(category(node, q_category_decision), none);
    EXPECT_EQ(new_node(domain.get(), "cc"), nullptr);
    for (int twice : {1, 2}) EXPECT_EQ(category(node, q_category_chance), none) << twice;
    EXPECT_NE(new_node(domain.get(), "cc"), nullptr);
}

TEST(links, lists_keep_their_order) {
    const owned_domain domain = network("cd cd cd cd cd", "04 14 24 03");
    const nodes n = nodes_of(domain.get());
    const auto parents = [&](std::size_t i) { return listed(q_node_get_parents(n[i])); };
    const auto children = [&](std::size_t i) { return listed(q_node_get_children(n[i])); };
    EXPECT_EQ(children(0), (nodes{n[4], n[3]}));
    EXPECT_EQ(q_node_switch_parent(n[4], n[1], n[3]), none);
    EXPECT_EQ(parents(4), (nodes{n[0], n[3], n[2]}));
    EXPECT_EQ(q_node_remove_parent(n[4], n[0]), none);
    EXPECT_EQ(parents(4), (nodes{n[3], n[2]}));
    EXPECT_EQ(children(0), nodes{n[3]});
    q_node_t clone = q_node_clone(n[4]);
    EXPECT_EQ(children(2), (nodes{n[4], clone}));
    EXPECT_EQ(q_node_delete(n[3]), none);
    EXPECT_EQ(listed(q_node_get_parents(clone)), nodes{n[2]});
    EXPECT_EQ(children(0), nodes());

    const owned_domain deep = network("cd cd cd cd cd cd cd", "23 01 02 13 35 45 05");
    const nodes d = nodes_of(deep.get());
    EXPECT_EQ(listed(q_node_get_ancestors(d[5])), (nodes{d[5], d[3], d[4], d[0], d[2], d[1]}));
    EXPECT_EQ(listed(q_node_get_descendants(d[0])), (nodes{d[0], d[1], d[2], d[5], d[3]}));
    EXPECT_EQ(listed(q_node_get_descendants(d[6])), nodes{d[6]});
}

// A clone in the place of the original makes the same network, but for the evidence and the counts of the original.
TEST(links, a_clone_has_the_properties_but_no_life_of_the_original) {
    const auto build = [] {
        owned_domain domain = network("cd cd", "01");
        const nodes n = nodes_of(domain.get());
        for (std::size_t i : {0u, 1u}) q_node_set_number_of_states(n[i], i + 2);
        q_node_set_subtype(n[1], q_subtype_interval);
        q_node_set_state_value(n[1], 1, 2.5);
        q_node_set_state_label(n[1], 2, "two");
        q_node_set_label(n[1], "label");
        q_node_set_position(n[1], 3, 4);
        q_node_set_attribute(n[1], "k", "v");
        set_data(q_node_get_table(n[1]), {1, 2, 3, 4, 5, 6});
        return domain;
    };
    const owned_domain domain = build();
    q_node_t original = node_at(domain.get(), 1);
    q_node_set_user_data(original, domain.get());
    q_node_select_state(original, 1);
    q_node_new_experience_table(original);
    q_node_new_fading_table(original);
    q_node_set_name(original, "a");
    q_node_t child = new_chance(domain.get(), "c", 2, {original}), clone = q_node_clone(original);
    EXPECT_EQ(q_node_get_user_data(clone), nullptr);
    EXPECT_EQ(*q_node_get_children(clone), nullptr);
    for (q_node_t deleted : {child, original}) q_node_delete(deleted);
    EXPECT_EQ(digest(domain.get()), digest(build().get()));
    int32_t x = 0, y = 0;
    EXPECT_TRUE(q_node_get_position(clone, &x, &y) == none && x == 3 && y == 4);
}

// Results are there as long as the domain is compiled.
TEST(links, what_uncompiles_a_domain) {
    // 0 -> 2, 1 like 0, and a real-valued function 3 of 0 that came after compiling
    const network_builder build = [] {
        owned_domain domain = network("cd cd cd", "02");
        for (q_node_t node : nodes_of(domain.get())) q_node_set_number_of_states(node, 2);
        EXPECT_EQ(propagate(domain), none);
        EXPECT_EQ(q_node_add_parent(new_node(domain.get(), "fo"), node_at(domain.get(), 0)), none);
        return domain;
    };
    const auto expect = [&](double belief, const std::vector<tested_call>& calls) {
        for (const tested_call& change : calls) {
            const owned_domain domain = build();
            const nodes n = nodes_of(domain.get());
            EXPECT_EQ(change(domain.get(), n), none);
            EXPECT_EQ(q_node_get_belief(n[2], 0), belief) << &change - calls.data();
            EXPECT_EQ(q_domain_is_compiled(domain.get()), belief < 0 ? 0u : 1u);
        }
    };
    const auto count = q_node_set_number_of_states;
    expect(-1, {call(new_node, "cd"), call(new_node, "fd"), call(q_node_set_category, 1, q_category_decision),
                call(count, 1, 3), call(q_node_add_parent, 2, 1), call(q_node_remove_parent, 2, 0),
                call(q_node_switch_parent, 2, 0, 1), call(q_node_clone, 1), call(q_node_delete, 1)});
    expect(0.5, {call(new_node, "fo"), call(q_node_set_category, 1, q_category_chance),
                 call(q_node_set_subtype, 0, q_subtype_boolean), call(count, 1, 2),
                 call(q_node_set_state_label, 1, 0, "zero"), call(q_node_set_name, 1, "name"),
                 call(q_node_touch_table, 1), call(q_node_add_parent, 3, 1), call(q_node_remove_parent, 3, 0),
                 call(q_node_clone, 3), call(q_node_delete, 3)});
    expect_refusals(build, loop, call(q_node_add_parent, 0, 2));
}

}  // namespace
