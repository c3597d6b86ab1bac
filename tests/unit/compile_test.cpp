// Compiling domains: the moral graph, the junction forest and the log.
#include <algorithm>
#include <functional>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "junction_forest.h"
#include "moral_graph.h"
#include "scenarios.h"
#include "table.h"
#include "texts.h"

namespace {

using namespace quarn;

q_node_t add(const owned_domain& domain, const char* name, std::size_t states,
             std::initializer_list<q_node_t> parents = {}, const char* letters = "cd") {
    return new_chance(domain.get(), name, states, parents, letters);
}

// The log of what happens meanwhile, without the first line, the time.
std::string trace(const owned_domain& domain, const auto& action) {
    const std::string text = logged(domain.get(), action);
    return text.substr(text.find('\n') + 1);
}

using nodes = std::vector<q_node_t>;

// Discrete chance nodes; with other kinds continuous ones too, or decisions, utilities and functions.
owned_domain random_network(unsigned seed, bool of_all_kinds = false) {
    owned_domain domain(q_domain_new());
    std::mt19937 random(seed);
    nodes made(1 + seed / 2 % 40);
    for (q_node_t& node : made) {
        const bool is_special = of_all_kinds && random() % 3 == 0;
        node = new_node(domain.get(), !is_special ? "cd" : seed % 2 == 0 ? "cc" : "dd");
    }
    std::ranges::shuffle(made, random);
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (made[i]->is_discrete()) q_node_set_number_of_states(made[i], 1 + random() % 3);
        for (std::size_t draws = random() % 4; draws > 0 && i > 0; --draws)
            q_node_add_parent(made[i], made[random() % i]);  // or refused, by the kinds too
    }
    for (std::size_t i = of_all_kinds && seed % 2 == 1 ? random() % 4 : 0; i > 0; --i) {
        q_node_t added = new_node(domain.get(), i % 2 == 0 ? "uo" : "fd");
        for (int draws = 0; draws < 3; ++draws) q_node_add_parent(added, made[random() % made.size()]);
    }
    return domain;
}

// Some of the discrete nodes, ended by null.
nodes some_discrete_nodes(const owned_domain& domain, unsigned one_in) {
    nodes chosen;
    for (node* n = domain->oldest; n != nullptr; n = n->newer)
        if (n->is_discrete() && n->number % one_in == 0) chosen.push_back(n);
    chosen.push_back(nullptr);
    return chosen;
}

void expect_junction_forest(const owned_domain& domain) {
    const junction_forest& forest = *forest_of(*domain);
    std::vector<int> parts(forest.vertex_count);  // of the tree, with a node: cliques less links
    std::size_t number = forest.cliques.size();
    for (const auto& tree : forest.trees)
        for (std::size_t i = 0; i < tree->cliques.size(); ++i) {
            EXPECT_EQ(tree->cliques[i]->number, number--);
            for (const node* member : tree->cliques[i]->members) ++parts[member->vertex];
            if (i == 0) continue;
            const separator& link = *tree->separators[i - 1];
            for (const node* member : link.members) --parts[member->vertex];
            EXPECT_GT(link.parent->number, link.child->number);
            // Where both share continuous nodes, the clique has all its discrete nodes from its parent.
            EXPECT_TRUE(link.size.continuous == 0 ||
                        link.child->discrete_members().size() + link.size.continuous == link.members.size());
        }
    EXPECT_EQ(number, 0u) << "cliques in no tree";
    EXPECT_EQ(parts, std::vector<int>(parts.size(), 1));
}

std::vector<std::set<const node*>> clique_sets(const owned_domain& domain) {
    std::vector<std::set<const node*>> sets;
    for (const auto& made : triangulated_forest(*domain)->cliques)
        sets.emplace_back(made->members.begin(), made->members.end());
    std::ranges::sort(sets);
    return sets;
}

TEST(Compile, BuildsAJunctionForestOfAnyNetworkByAnyMethod) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        const owned_domain domain = random_network(seed, seed % 3 > 0);
        if (seed % 5 == 0) q_domain_set_excluded_nodes(domain.get(), some_discrete_nodes(domain, 4).data());
        const q_triangulation_method_t method =
            q_triangulate_clique_size + q_triangulation_method_t(seed % 6);
        if (q_domain_triangulate(domain.get(), method) != q_error_none) {  // all of one node
            EXPECT_EQ(domain->counts.discrete + domain->counts.continuous, domain->settings.excluded.size());
            continue;
        }
        EXPECT_EQ(q_domain_is_compiled(domain.get()), 0u);
        const auto cliques = clique_sets(domain);
        const std::size_t trees = triangulated_forest(*domain)->trees.size();
        ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
        expect_junction_forest(domain);
        EXPECT_EQ(q_domain_propagate(domain.get(), q_equilibrium_sum, q_mode_normal),
                  domain->settings.excluded.empty() ? q_error_none : q_error_invalid_evidence);

        q_domain_uncompile(domain.get());
        EXPECT_EQ(trees, connected_components(make_moral_graph(*domain).links).size());
        // The order that was found fills in nothing else.
        const q_node_t* order = q_domain_get_elimination_order(domain.get());
        ASSERT_NE(order, nullptr);
        EXPECT_EQ(q_domain_set_initial_triangulation(domain.get(), order), q_error_none);
        ASSERT_EQ(q_domain_triangulate_with_order(domain.get(), order), q_error_none);
        EXPECT_EQ(clique_sets(domain), cliques);
        // Nor does the search make anything worse of it.
        const auto weight = [&] {
            double sum = 0;
            for (const auto& made : triangulated_forest(*domain)->cliques)
                sum += double(made->size.numbers());
            return sum;
        };
        const double before = weight();
        q_domain_uncompile(domain.get());
        q_domain_set_max_separator_size(domain.get(), seed % 4);
        ASSERT_EQ(q_domain_triangulate(domain.get(), q_triangulate_total_weight), q_error_none);
        EXPECT_LE(weight(), before);
    }
}

TEST(Compile, WritesItsTrace) {
    const owned_domain domain(q_domain_new());
    q_node_t smoke = add(domain, "smoking_of_tobacco_or_other_plants", 2);
    q_node_t age = add(domain, "age_in_completed_years", 3);
    q_node_t lung = add(domain, "cancer_or_others", 2, {smoke, age});  // one too long for its line
    add(domain, "xray", 2, {lung});
    add(domain, "coin", 2);
    for (q_node_t node : {smoke, lung}) q_node_get_table(node);
    EXPECT_EQ(
        trace(domain, [&] { EXPECT_EQ(q_domain_compile(domain.get()), q_error_none); }),
        "\n\nMoral links:\n\n    Marrying smoking_of_tobacco_or_other_plants and age_in_completed_years\n"
        "\nThis component is a clique of cost 12\nThis component is a clique of cost 4\n"
        "This component is a clique of cost 2\n"
        "\n\nTotal cost of triangulation for all prime components is 18\n"
        "\n\nElimination sequence:\n\n    coin\n    smoking_of_tobacco_or_other_plants\n"
        "    age_in_completed_years\n    cancer_or_others\n    xray\n"
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

// The triangulation of a circle s l e b, closed by d, to whose ends two continuous nodes are linked.
std::string trace_of(const std::function<q_status_t(q_domain_t, const nodes&)>& triangulation,
                     const char* end = "\n\nCliques") {
    const owned_domain domain(q_domain_new());
    q_node_t s = add(domain, "s", 2), l = add(domain, "l", 3, {s});
    q_node_t b = add(domain, "b", 5, {s}), e = add(domain, "e", 4, {l});
    q_node_t d = add(domain, "d", 2, {e, b});
    q_node_t x = new_continuous(domain.get(), "x", {s}), y = new_continuous(domain.get(), "y", {x, d});
    const std::string text = trace(domain, [&] {
        EXPECT_EQ(triangulation(domain.get(), {x, y, s, l, b, e, d, nullptr}), q_error_none);
    });
    return text.substr(0, text.find(end));
}

TEST(Compile, WritesHowItTriangulates) {
    const std::string moral = "\n\nMoral links:\n\n    Marrying b and e\n    Marrying d and x\n"
                              "\n\nNecessary fill-ins:\n\n    Creating necessary fill-in between s and d\n";
    const std::string continuous =
        "This component is a clique of cost 12\nThis component is a clique of cost 12\n";
    const std::string total =
        "\n\nTotal cost of triangulation for all prime components is 128\n\n\nElimination sequence:\n\n"
        "    y\n    x\n    l\n    ";
    EXPECT_EQ(
        trace_of([](q_domain_t domain, const nodes&) { return q_domain_triangulate(domain, 17); },
                 "\n\nThe junction forest"),
        moral +
            "\n\nTriangulating prime component with 5 members:\n"
            "\n    Using minimum fill-in size heuristic for triangulation:\n\n"
            "\tEliminating l\n\tCreating fill-in between s and e\n\tEliminating s\n\tEliminating b\n"
            "\tEliminating e\n\tEliminating d\n\nFound triangulation of prime component of cost 104\n" +
            continuous + total +
            "b\n    e\n    s\n    d\n"
            "\n\nCliques:\n\nClique 4, 3 members, table size = 4 + 4:\n    s, d, x\n"
            "\nClique 3, 3 members, table size = 2 + 4:\n    d, x, y\n"
            "\nClique 2, 4 members, table size = 80:\n    s, b, e, d\n"
            "\nClique 1, 3 members, table size = 24:\n    s, l, e\n\nTotal clique table size: 110 + 8\n");
    EXPECT_EQ(trace_of([](q_domain_t domain, const nodes& order) {
                  return q_domain_triangulate_with_order(domain, order.data());
              }),
              moral +
                  "\n\nUser specified triangulation -- Fill-in links and node numbering:\n\n"
                  "\tCreating fill-in between y and s\n    7 x\n    6 y\n\tCreating fill-in between l and b\n"
                  "\tCreating fill-in between l and d\n    5 s\n    4 l\n    3 b\n    2 e\n    1 d\n"
                  "\tRemoving redundant fill-in between y and s\n");
    EXPECT_EQ(
        trace_of([](q_domain_t domain, const nodes& order) {
            q_domain_set_initial_triangulation(domain, order.data());
            return q_domain_triangulate(domain, 19);
        }),
        moral + "\n" + continuous +
            "\nTriangulating prime component with 5 members:\n"
            "Triangulating graph G1:\n\tFound 2 minimal separators\n\tKept 2 separators for triangulation\n"
            "\tCreated 1 fragments\n\tInitial triangulation has cost 180\n"
            "\tFound greedy triangulation of cost 104\n"
            "\n    Optimal triangulation of graph G1 has cost 104\n"
            "    Using the following separator of size 2 and cost 8:\n    s, e\n"
            "    to split the graph into the following subgraphs:\n\tG2 (size: 4)\n\tG3 (size: 3)\n"
            "\n    Graph G2 is a clique of cost 80\n\n    Graph G3 is a clique of cost 24\n"
            "\nFound optimal triangulation of cost 104\n" +
            total + "s\n    b\n    e\n    d\n");
}

// A ring of five, b and d large: their triangles leave the one of a, c and e.
TEST(Compile, LogsHowASolutionSplits) {
    const owned_domain domain(q_domain_new());
    q_node_t first = add(domain, "a", 2), last = first;
    for (const char* name : {"b", "c", "d", "e"}) last = add(domain, name, name[0] % 2 == 0 ? 9 : 2, {last});
    add(domain, "f", 9, {last, first});
    const std::string log =
        logged(domain.get(), [&] { q_domain_triangulate(domain.get(), q_triangulate_total_weight); });
    EXPECT_THAT(log, testing::HasSubstr("\n    Optimal triangulation of graph G1 has cost 80\n"
                                        "    Using the following separator of size 2 and cost 4:\n    c, e\n"
                                        "    to split the graph into the following subgraphs:\n"
                                        "\tG2 (size: 3)\n\tG3 (size: 4)\n"
                                        "\n    Graph G2 is a clique of cost 36\n"
                                        "\n    Optimal triangulation of graph G3 has cost 44\n"
                                        "    Using the following separator of size 2 and cost 4:\n    a, c\n"
                                        "    to split the subgraph into the following subgraphs:\n"
                                        "\tG4 (size: 3)\n\tG5 (size: 3)\n"
                                        "\n    Graph G4 is a clique of cost 8\n"
                                        "\n    Graph G5 is a clique of cost 36\n"
                                        "\nFound optimal triangulation of cost 80\n"));
}

TEST(Compile, RefusesWhatItCannotDo) {
    const owned_domain domain(q_domain_new());
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_usage);
    q_node_t utility = add(domain, "u", 0, {}, "uo");
    EXPECT_EQ(q_domain_triangulate(domain.get(), q_triangulate_best_greedy), q_error_usage);
    q_node_t a = add(domain, "a", 2), b = add(domain, "b", 2, {a});
    const owned_domain other = random_network(3);
    q_node_t stranger = q_domain_get_first_node(other.get());
    for (const nodes& order : {nodes{a}, {a, a}, {a, utility}, {a, stranger}, {a, b, a}, {}}) {
        nodes ended = order;
        ended.push_back(nullptr);
        EXPECT_EQ(q_domain_triangulate_with_order(domain.get(), ended.data()), q_error_enumeration);
        EXPECT_EQ(q_domain_set_initial_triangulation(domain.get(), ended.data()), q_error_enumeration);
    }
    for (const q_triangulation_method_t method : {14, 21})
        EXPECT_EQ(q_domain_triangulate(domain.get(), method), q_error_usage);
    q_domain_set_max_separator_size(domain.get(), 2);
    EXPECT_EQ(q_domain_triangulate(domain.get(), q_triangulate_total_weight), q_error_usage);
    for (const nodes& excluded : {nodes{utility, nullptr}, {stranger, nullptr}})
        EXPECT_EQ(q_domain_set_excluded_nodes(domain.get(), excluded.data()), q_error_usage);
    const nodes both{a, b, nullptr};
    EXPECT_EQ(q_domain_set_excluded_nodes(domain.get(), both.data()), q_error_none);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_usage);
    EXPECT_EQ(q_domain_set_excluded_nodes(domain.get(), nullptr), q_error_none);
    EXPECT_EQ(q_domain_get_elimination_order(domain.get()), nullptr);
    EXPECT_EQ(q_error_code(), q_error_usage);
    EXPECT_EQ(q_domain_triangulate_with_order(domain.get(), both.data()), q_error_none);
    EXPECT_EQ(q_domain_triangulate_with_order(domain.get(), both.data()), q_error_usage);
    EXPECT_EQ(q_domain_set_excluded_nodes(domain.get(), nullptr), q_error_usage);

    const owned_domain mute = random_network(9, true);
    q_domain_set_log_file(mute.get(), "/dev/full", 1);
    for (const auto& call : {q_domain_compile, +[](q_domain_t d) { return q_domain_triangulate(d, 19); }}) {
        EXPECT_EQ(call(mute.get()), q_error_io);
        EXPECT_EQ(q_domain_is_triangulated(mute.get()), 0u);
    }
}

TEST(Compile, SurvivesLackOfMemory) {
    expect_survives_lack_of_memory({"compile", [] { return random_network(12); }, q_domain_compile});
    expect_survives_lack_of_memory({"search", [] { return random_network(8, true); },
                                    [](q_domain_t domain) { return q_domain_triangulate(domain, 19); }});
}

}  // namespace
