// Compiling domains: the moral graph, the junction forest and the log.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "graph.h"
#include "junction_forest.h"
#include "moral_graph.h"
#include "network_building.h"
#include "owned_domain.h"
#include "table.h"

namespace {

using namespace quarn;

q_node_t new_node(q_domain_t domain, q_category_t category, const char* name,
                  std::initializer_list<q_node_t> parents) {
    q_node_t node =
        q_domain_new_node(domain, category, category == q_category_utility ? q_kind_other : q_kind_discrete);
    q_node_set_name(node, name);
    for (q_node_t parent : parents) q_node_add_parent(node, parent);
    return node;
}

// A log file that is read without its first line, the time.
class domain_log {
public:
    explicit domain_log(q_domain_t domain) { q_domain_set_log_file(domain, path_.c_str(), 0); }
    ~domain_log() { std::remove(path_.c_str()); }

    std::string text() const {
        std::ifstream file(path_);
        std::string time;
        std::getline(file, time);
        std::ostringstream rest;
        rest << file.rdbuf();
        return rest.str();
    }

private:
    std::string path_ = testing::TempDir() + "quarn_compile_test.log";
};

owned_domain random_network(unsigned seed, std::size_t nodes) {
    owned_domain domain(q_domain_new());
    std::mt19937 random(seed);
    std::vector<q_node_t> made;
    for (std::size_t i = 0; i < nodes; ++i) {
        q_node_t node = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
        q_node_set_number_of_states(node, 1 + random() % 3);
        for (std::size_t draws = random() % 4; draws > 0 && !made.empty(); --draws) {
            q_node_t parent = made[random() % made.size()];
            if (!node->parents.contains(parent)) q_node_add_parent(node, parent);
        }
        made.insert(made.begin() + static_cast<std::ptrdiff_t>(random() % (made.size() + 1)), node);
    }
    return domain;
}

bool holds_all(const clique& tested, const node_list& nodes) {
    return std::ranges::all_of(nodes, [&](const node* n) { return tested.members.contains(n); });
}

std::size_t entries_before(const clique& tested, const node* member) {
    return configurations({tested.members.begin(), tested.members.index_of(member)});
}

TEST(MoralGraph, LinksWhatOccursInOneTable) {
    owned_domain domain(q_domain_new());
    q_node_t a = new_node(domain.get(), q_category_chance, "a", {});
    q_node_t b = new_node(domain.get(), q_category_chance, "b", {});
    q_node_t u = new_node(domain.get(), q_category_utility, "u", {a, b});  // marries them, is no vertex
    q_node_t d = new_node(domain.get(), q_category_decision, "d", {a});
    new_node(domain.get(), q_category_chance, "e", {d, b});
    new_node(domain.get(), q_category_chance, "f", {b, a, d});  // all of them are linked already
    domain_log log(domain.get());

    const std::vector<vertex_set> expected{{1, 2, 4}, {0, 2, 3, 4}, {0, 1, 3, 4}, {1, 2}, {0, 1, 2}};
    EXPECT_EQ(make_moral_graph(*domain).neighbors, expected);
    domain->log.flush();
    EXPECT_EQ(u->vertex, no_vertex);
    EXPECT_EQ(d->vertex, 2u);
    EXPECT_EQ(log.text(), "\nMoral links:\n\n    Marrying a and b\n    Marrying b and d\n");
}

// A function of b and e on which c depends, besides a.
TEST(MoralGraph, LeavesFunctionsApartFromTheirParents) {
    owned_domain domain(q_domain_new());
    q_node_t a = new_node(domain.get(), q_category_chance, "a", {});
    q_node_t b = new_node(domain.get(), q_category_chance, "b", {});
    q_node_t f = new_node(domain.get(), q_category_function, "f", {b});
    q_node_t e = new_node(domain.get(), q_category_chance, "e", {});
    q_node_add_parent(f, e);
    q_node_t c = new_node(domain.get(), q_category_chance, "c", {f, a});
    ASSERT_EQ(f->parents.size() + c->parents.size(), 4u);
    const std::vector<vertex_set> expected{{2, 4}, {}, {0, 4}, {}, {0, 2}};
    EXPECT_EQ(make_moral_graph(*domain).neighbors, expected);
}

TEST(Compile, BuildsAJunctionForest) {
    for (unsigned seed = 0; seed < 80; ++seed) {
        SCOPED_TRACE(seed);
        const owned_domain domain = random_network(seed, 1 + seed / 2);
        ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
        const junction_forest& forest = *forest_of(*domain);
        const graph moral = make_moral_graph(*domain);
        ASSERT_EQ(forest.trees.size(), connected_components(moral).size());

        std::vector<std::size_t> links(forest.nodes.size(), 0);
        std::size_t listed = 0;
        std::size_t largest = 1;
        for (const auto& tree : forest.trees) {
            listed += tree->cliques.size();
            EXPECT_EQ(tree->cliques[0], tree->root);
            EXPECT_EQ(tree->separators.size(), tree->cliques.size() - 1);
            EXPECT_EQ(q_junction_tree_get_next(tree.get()) == nullptr, tree == forest.trees.back());
            for (std::size_t i = 1; i < tree->cliques.size(); ++i) {
                const separator& link = *tree->separators[i - 1];
                EXPECT_EQ(link.child, tree->cliques[i]);
                EXPECT_EQ(link.child->to_parent, &link);
                EXPECT_EQ(link.parent->tree, tree.get());
                EXPECT_GT(link.parent->number, link.child->number);
                EXPECT_TRUE(link.parent->neighbors.contains(link.child));
                EXPECT_TRUE(link.child->neighbors.contains(link.parent));
                std::vector<node*> shared;
                std::ranges::copy_if(link.parent->members, std::back_inserter(shared),
                                     [&](const node* n) { return link.child->members.contains(n); });
                EXPECT_EQ(link.members, shared);
                EXPECT_EQ(link.table.size(), configurations(shared));
                EXPECT_EQ(link.in_parent, make_loop_plan(link.parent->members, shared));
                EXPECT_EQ(link.in_child, make_loop_plan(link.child->members, shared));
                for (const node* member : shared) ++links[member->vertex];
                largest = std::max(largest, link.size);
            }
        }
        EXPECT_EQ(listed, forest.cliques.size());
        for (std::size_t i = 0; i < forest.cliques.size(); ++i) {
            const clique& made = *forest.cliques[i];
            EXPECT_EQ(made.number, forest.cliques.size() - i);
            EXPECT_EQ(made.table.size(), configurations(made.members));
            EXPECT_TRUE(std::ranges::is_sorted(made.members, {}, &node::vertex));
        }

        std::size_t beliefs = 0;
        for (std::size_t vertex = 0; vertex < forest.nodes.size(); ++vertex) {
            const compiled_node& entry = forest.nodes[vertex];
            ASSERT_EQ(entry.owner->vertex, vertex);
            EXPECT_TRUE(forest.tree_of(*entry.owner).nodes.contains(entry.owner));
            EXPECT_EQ(entry.first_belief, beliefs);
            beliefs += entry.owner->state_count;
            largest = std::max(largest, entry.owner->state_count);

            const node_list& family = entry.owner->own_table->nodes;
            const clique* home = nullptr;
            std::size_t holders = 0;
            for (const auto& tested : forest.cliques) {
                if (holds_all(*tested, family) && (home == nullptr || tested->size < home->size))
                    home = tested.get();
                if (!tested->members.contains(entry.owner)) continue;
                ++holders;
                EXPECT_GE(std::pair(tested->size, entries_before(*tested, entry.owner)),
                          std::pair(entry.best->size, entries_before(*entry.best, entry.owner)));
            }
            EXPECT_EQ(holders, links[vertex] + 1) << "not connected in the tree";
            ASSERT_EQ(entry.home, home);
            EXPECT_TRUE(entry.best->members.contains(entry.owner));
            EXPECT_EQ(std::ranges::count(home->tables, entry.owner, &assigned_table::owner), 1);
        }
        EXPECT_EQ(forest.beliefs.size(), beliefs);
        EXPECT_EQ(forest.scratch.size(), largest);
    }
}

TEST(Compile, WritesItsTrace) {
    owned_domain domain(q_domain_new());
    q_node_t smoke = new_chance(domain.get(), "smoking_of_tobacco_or_other_plants", 2);
    q_node_t age = new_chance(domain.get(), "age_in_completed_years", 3);
    q_node_t lung = new_chance(domain.get(), "lung_cancer_or_other_disease", 2, {smoke, age});
    new_chance(domain.get(), "xray", 2, {lung});
    new_chance(domain.get(), "coin", 2);
    for (q_node_t node : {smoke, lung}) q_node_get_table(node);
    domain_log log(domain.get());
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(log.text(), R"(

Moral links:

    Marrying smoking_of_tobacco_or_other_plants and age_in_completed_years


Cliques:

Clique 3, 2 members, table size = 4:
    lung_cancer_or_other_disease, xray

Clique 2, 3 members, table size = 12:
    smoking_of_tobacco_or_other_plants, age_in_completed_years,
    lung_cancer_or_other_disease

Clique 1, 1 member, table size = 2:
    coin

Total clique table size: 18


The junction forest:

Creating junction tree with clique 3 as root ...

Cliques 2 and 3 linked, separator has 1 member and table size = 2:
    lung_cancer_or_other_disease

Creating junction tree with clique 1 as root ...


Checking tables for all nodes:

    Warning: Node `age_in_completed_years' has no table
    Warning: Node `xray' has no table
    Warning: Node `coin' has no table


Assignment of potentials to cliques:

    Node smoking_of_tobacco_or_other_plants assigned to clique 2
    Node age_in_completed_years assigned to clique 2
    Node lung_cancer_or_other_disease assigned to clique 2
    Node xray assigned to clique 3
    Node coin assigned to clique 1
)");
}

TEST(Compile, RefusesCliquesThatAreTooLargeAfterListingThem) {
    owned_domain domain(q_domain_new());
    q_node_t child = new_chance(domain.get(), "child", 2);
    for (int i = 0; i < 8; ++i) {
        q_node_t parent = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
        q_node_set_number_of_states(parent, 256);
        q_node_add_parent(child, parent);
    }
    new_chance(domain.get(), "coin", 2);
    domain_log log(domain.get());
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_size_too_large);
    EXPECT_EQ(q_domain_is_compiled(domain.get()), 0u);
    EXPECT_NE(log.text().find("9 members, table size = HUGE:\n"), std::string::npos);
    EXPECT_NE(log.text().find("\nTotal clique table size: HUGE\n"), std::string::npos);

    q_node_set_number_of_states(child, 1);
    q_node_remove_parent(child, node_at(domain.get(), 1));
    for (q_node_t node : nodes_of(domain.get())) q_node_set_number_of_states(node, 2);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
}

TEST(Compile, FailsWhenTheLogCannotBeWritten) {
    owned_domain domain(q_domain_new());
    new_chance(domain.get(), "a", 2);
    ASSERT_EQ(q_domain_set_log_file(domain.get(), "/dev/full", 1), q_error_none);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_io);
    EXPECT_EQ(q_domain_is_compiled(domain.get()), 0u);
}

TEST(Compile, AcceptsDiscreteChanceNodesOnly) {
    const struct {
        const char* what;
        void (*build)(q_domain_t);
        q_status_t status;
    } cases[] = {
        {"no nodes", [](q_domain_t) {}, q_error_usage},
        {"one node", [](q_domain_t domain) { new_chance(domain, "a", 1); }, q_error_none},
        {"compiled", [](q_domain_t domain) { new_chance(domain, "a", 2), q_domain_compile(domain); },
         q_error_usage},
        {"continuous", [](q_domain_t domain) { new_continuous(domain, "a"); }, q_error_usage},
        {"decision",
         [](q_domain_t domain) { new_node(domain, q_category_decision, "d", {new_chance(domain, "a", 2)}); },
         q_error_usage},
        {"utility",
         [](q_domain_t domain) { new_node(domain, q_category_utility, "u", {new_chance(domain, "a", 2)}); },
         q_error_usage},
        {"function", [](q_domain_t domain) { new_node(domain, q_category_function, "f", {}); },
         q_error_usage},
    };
    for (const auto& [what, build, status] : cases) {
        SCOPED_TRACE(what);
        owned_domain domain(q_domain_new());
        build(domain.get());
        const q_boolean_t was_compiled = q_domain_is_compiled(domain.get());
        EXPECT_EQ(q_domain_compile(domain.get()), status);
        EXPECT_EQ(q_domain_is_compiled(domain.get()), status == q_error_none ? 1u : was_compiled);
    }
}

TEST(Compile, MarksTheTreesOfChangedTables) {
    owned_domain domain(q_domain_new());
    q_node_t a = new_chance(domain.get(), "a", 2);
    q_node_t b = new_chance(domain.get(), "b", 2);
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    q_node_t function = q_domain_new_node(domain.get(), q_category_function, q_kind_other);
    q_node_t outer = q_domain_new_node(domain.get(), q_category_function, q_kind_other);
    q_node_add_parent(outer, function);
    const junction_forest& forest = *forest_of(*domain);
    const auto changed = [&] {
        return std::pair(forest.tree_of(*a).tables_changed, forest.tree_of(*b).tables_changed);
    };
    for (const auto& tree : forest.trees) tree->tables_changed = false;

    q_node_remove_parent(outer, function);  // neither is in a tree
    EXPECT_EQ(changed(), std::pair(false, false));
    EXPECT_EQ(q_node_get_junction_tree(outer), nullptr);
    EXPECT_EQ(q_error_code(), q_error_usage);
    q_node_touch_table(b);
    EXPECT_EQ(changed(), std::pair(false, true));
}

// Neither the depth of a tree nor the neighbours of a node may cost more than their share.
TEST(CompileLarge, ManyNodesInAChainOrAroundAHub) {
    constexpr std::size_t count = 100000;
    for (const bool is_chain : {false, true}) {
        owned_domain domain(q_domain_new());
        q_node_t parent = new_chance(domain.get(), "root", 2);
        for (std::size_t i = 1; i < count; ++i) {
            q_node_t child = q_domain_new_node(domain.get(), q_category_chance, q_kind_discrete);
            q_node_set_number_of_states(child, 2 + i % 2);
            q_node_add_parent(child, parent);
            if (is_chain) parent = child;
        }
        ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
        EXPECT_EQ(forest_of(*domain)->cliques.size(), count - 1);
    }
}

}  // namespace
