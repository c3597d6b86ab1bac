// Compiling domains: the moral graph, the junction forest and the log.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>

#include <gmock/gmock.h>

#include "allocation_faults.h"
#include "junction_forest.h"
#include "moral_graph.h"
#include "owned_domain.h"
#include "scenarios.h"
#include "table.h"

namespace {

using namespace quarn;

constexpr q_category_t chance = q_category_chance, function = q_category_function;

q_node_t add(const owned_domain& domain, q_category_t category, const char* name, std::size_t states,
             const std::vector<q_node_t>& parents = {}) {
    q_node_t node = q_domain_new_node(domain.get(), category, states == 0 ? q_kind_other : q_kind_discrete);
    q_node_set_name(node, name);
    q_node_set_number_of_states(node, states);
    for (q_node_t parent : parents) q_node_add_parent(node, parent);
    return node;
}

// What is logged meanwhile, without the first line, the time.
std::string logged(const owned_domain& domain, const auto& action) {
    const auto path = testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name();
    q_domain_set_log_file(domain.get(), path.c_str(), 0);
    action();
    domain->log.flush();
    std::string text;
    std::getline(std::ifstream(path), text, '\0');
    std::remove(path.c_str());
    return text.substr(text.find('\n') + 1);
}

TEST(MoralGraph, LinksWhatOccursInOneTable) {
    const owned_domain domain(q_domain_new());
    q_node_t a = add(domain, chance, "a", 2);
    q_node_t b = add(domain, chance, "b", 2);
    add(domain, q_category_utility, "u", 0, {a, b});  // marries them, is no vertex
    q_node_t d = add(domain, q_category_decision, "d", 2, {a});
    add(domain, chance, "e", 2, {d, b});
    add(domain, chance, "f", 2, {a, d});  // linked already
    q_node_t g = add(domain, chance, "g", 2);
    q_node_t h = add(domain, function, "h", 2, {b, g});  // not linked to them
    add(domain, chance, "i", 2, {h, a});
    graph moral;
    EXPECT_EQ(logged(domain, [&] { moral = make_moral_graph(*domain); }),
              "\nMoral links:\n\n    Marrying a and b\n    Marrying a and h\n    Marrying b and d\n");
    const std::vector<vertex_set> expected{{1, 2, 4, 6, 7}, {0, 2, 3}, {0, 1, 3, 4}, {1, 2},
                                           {0, 2},          {},        {0, 7},       {0, 6}};
    EXPECT_EQ(moral.neighbors, expected);
}

owned_domain random_network(unsigned seed) {
    owned_domain domain(q_domain_new());
    std::mt19937 random(seed);
    std::vector<q_node_t> nodes(1 + seed / 2);
    for (q_node_t& node : nodes) node = q_domain_new_node(domain.get(), chance, q_kind_discrete);
    std::ranges::shuffle(nodes, random);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        q_node_set_number_of_states(nodes[i], 1 + random() % 3);
        for (std::size_t draws = random() % 4; draws > 0 && i > 0; --draws)
            q_node_add_parent(nodes[i], nodes[random() % i]);  // refused when it is one already
    }
    return domain;
}

TEST(Compile, BuildsAJunctionForest) {
    for (unsigned seed = 0; seed < 80; ++seed) {
        SCOPED_TRACE(seed);
        const owned_domain domain = random_network(seed);
        ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
        const junction_forest& forest = *forest_of(*domain);
        ASSERT_EQ(forest.trees.size(), connected_components(make_moral_graph(*domain)).size());
        std::vector<int> parts(forest.nodes.size());  // of the tree, with a node: cliques less links
        std::size_t number = forest.cliques.size();
        for (const auto& tree : forest.trees)
            for (std::size_t i = 0; i < tree->cliques.size(); ++i) {
                EXPECT_EQ(tree->cliques[i]->number, number--);
                for (const node* member : tree->cliques[i]->members) ++parts[member->vertex];
                if (i == 0) continue;
                const separator& link = *tree->separators[i - 1];
                for (const node* member : link.members) --parts[member->vertex];
                EXPECT_GT(link.parent->number, link.child->number);
            }
        EXPECT_EQ(number, 0u) << "cliques in no tree";
        EXPECT_EQ(parts, std::vector<int>(parts.size(), 1));
        for (const compiled_node& entry : forest.nodes) {
            const clique* home = nullptr;
            for (const auto& tested : forest.cliques) {
                const auto is_member = [&](const node* n) { return tested->members.contains(n); };
                const bool is_possible = std::ranges::all_of(entry.owner->own_table->nodes, is_member);
                if (is_possible && (home == nullptr || tested->size < home->size)) home = tested.get();
                EXPECT_TRUE(!is_member(entry.owner) || tested->size >= entry.best->size);
            }
            EXPECT_EQ(entry.home, home);
        }
        q_node_t f = add(domain, function, "f", 0), g = add(domain, function, "g", 0, {f});
        EXPECT_TRUE(q_node_remove_parent(g, f) == q_error_none && q_node_get_junction_tree(f) == nullptr);
    }
}

TEST(Compile, WritesItsTrace) {
    const owned_domain domain(q_domain_new());
    q_node_t smoke = add(domain, chance, "smoking_of_tobacco_or_other_plants", 2);
    q_node_t age = add(domain, chance, "age_in_completed_years", 3);
    q_node_t lung = add(domain, chance, "cancer_or_others", 2, {smoke, age});  // one too long for its line
    add(domain, chance, "xray", 2, {lung});
    add(domain, chance, "coin", 2);
    for (q_node_t node : {smoke, lung}) q_node_get_table(node);
    EXPECT_EQ(
        logged(domain, [&] { EXPECT_EQ(q_domain_compile(domain.get()), q_error_none); }),
        "\n\nMoral links:\n\n    Marrying smoking_of_tobacco_or_other_plants and age_in_completed_years\n"
        "\n\nCliques:\n\nClique 3, 2 members, table size = 4:\n    cancer_or_others, xray\n"
        "\nClique 2, 3 members, table size = 12:\n"
        "    smoking_of_tobacco_or_other_plants, age_in_completed_years,\n    cancer_or_others\n"
        "\nClique 1, 1 member, table size = 2:\n    coin\n\nTotal clique table size: 18\n"
        "\n\nThe junction forest:\n\nCreating junction tree with clique 3 as root ...\n"
        "\nCliques 2 and 3 linked, separator has 1 member and table size = 2:\n    cancer_or_others\n"
        "\nCreating junction tree with clique 1 as root ...\n\n\nChecking tables for all nodes:\n\n"
        "    Warning: Node `age_in_completed_years' has no table\n"
        "    Warning: Node `xray' has no table\n    Warning: Node `coin' has no table\n"
        "\n\nAssignment of potentials to cliques:\n\n"
        "    Node smoking_of_tobacco_or_other_plants assigned to clique 2\n"
        "    Node age_in_completed_years assigned to clique 2\n"
        "    Node cancer_or_others assigned to clique 2\n    Node xray assigned to clique 3\n"
        "    Node coin assigned to clique 1\n");
}

TEST(Compile, RefusesAllButDiscreteChanceNodesThatFit) {
    for (const auto& [category, kind] : {std::pair(chance, q_kind_continuous),
                                         {q_category_decision, q_kind_discrete},
                                         {q_category_utility, q_kind_other},
                                         {q_category_function, q_kind_other}}) {
        const owned_domain domain = random_network(9);
        q_domain_new_node(domain.get(), category, kind);
        EXPECT_EQ(q_domain_compile(domain.get()), q_error_usage) << category;
        EXPECT_EQ(q_domain_is_compiled(domain.get()), 0u);
    }
    const owned_domain mute = random_network(9);
    q_domain_set_log_file(mute.get(), "/dev/full", 1);
    EXPECT_EQ(q_domain_compile(mute.get()), q_error_io);
}

TEST(Compile, SurvivesLackOfMemory) {
    if (!allocation_faults::are_possible()) GTEST_SKIP();
    expect_survives_lack_of_memory({"compile", [] { return random_network(12); }, q_domain_compile});
}

// Neither the depth of a tree nor the neighbours of a node may cost more than their share.
TEST(CompileLarge, ManyNodesInAChainOrAroundAHub) {
    for (const bool is_chain : {false, true}) {
        const owned_domain domain(q_domain_new());
        q_node_t parent = q_domain_new_node(domain.get(), chance, q_kind_discrete);
        for (std::size_t i = 1; i < 100000; ++i) {
            q_node_t child = q_domain_new_node(domain.get(), chance, q_kind_discrete);
            q_node_set_number_of_states(child, 2 + i % 2);
            q_node_add_parent(child, parent);
            if (is_chain) parent = child;
        }
        ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
        EXPECT_EQ(forest_of(*domain)->cliques.size(), 99999u);
    }
}

}  // namespace
