// The minimal reduction of LIMIDs: examples, and against moral graphs.
#include <numeric>
#include <random>
#include <sstream>

#include "scenarios.h"

using namespace scenarios;

namespace {

// Nodes 0 1 .. 9 : ; < =, links that are requisite or lead elsewhere than to decisions, and links that are not requisite.
const char* const cases[][3] = {
    // The pigs [Lauritzen & Nilsson 2001]: health, tests, treatments, utilities. Nothing is forgotten.
    {"cd cd cd cd cd cd cd dd dd dd uo uo uo uo",
     "01 12 23 71 82 93 7: 8; 9< 3= 04 15 26 47 58 69 48 78 49 79 59 89", ""},
    // The health is seen: a Markov decision process. Then the oil wildcatter [Raiffa 1968].
    {"cd cd cd cd dd dd dd uo uo uo uo", "01 12 23 41 52 63 47 58 69 3: 04 15 26", "05 45 06 46 16 56"},
    {"cd dd cd uo dd", "21 13 23 42", "01 04"},           // 4 decides before 1, and 0 is of no use to 1
    {"cd cd cd dd uo", "03 23 34 04 24", "13"},           // a part of the policy is kept
    {"fo fd dd cd uo fo", "01 12 02 24 45 35 25", "32"},  // functions remain, but inform nobody
    {"fo fd cd cd dd uo", "02 05 45 13 15 34", "24"},     // a common value, a common uncertain state
};

owned_domain diagram(const char* const (&row)[3]) {
    owned_domain domain = network(row[0], std::string(row[1]) + " " + row[2]);
    for (q_node_t node : nodes_of(domain.get())) q_node_set_number_of_states(node, 2);
    for (q_node_t node : nodes_of(domain.get()))
        if (q_table_t table = q_node_get_table(node))
            std::iota(q_table_get_data(table), q_table_get_data(table) + q_table_get_size(table), 1.0);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    return domain;
}

TEST(limid_reduction, examples) {
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row[1]) + ", " + row[2]);
        const owned_domain domain = diagram(row), expected = diagram(row);
        const nodes all = nodes_of(expected.get());
        std::istringstream links(row[2]);
        std::size_t removed = 0;
        for (char parent, child; links >> parent >> child; ++removed)
            q_node_remove_parent(all.at(std::size_t(child - '0')), all.at(std::size_t(parent - '0')));
        EXPECT_EQ(q_domain_minimize_limid(domain.get()), removed);
        EXPECT_EQ(q_domain_is_compiled(domain.get()), removed == 0);
        EXPECT_EQ(digest(domain.get()), digest(expected.get()));
        if (removed == 2) expect_survivals([&] { return diagram(row); }, call(q_domain_minimize_limid));
    }
}

using node_set = std::size_t;  // bit i: node i in creation order
using node_sets = std::vector<node_set>;
constexpr std::size_t count = 9, all_decisions[] = {1, 3, 8};
constexpr node_set utilities = 0b001000100;
constexpr node_set only(std::size_t node) { return node_set{1} << node; }

// By the moral graph of the decision's family, the utilities that it influences, and their ancestors.
bool is_requisite(const node_sets& parents, std::size_t decision, node_set parent) {
    node_set influenced = only(decision), within = parents[decision] | influenced, reached = parent;
    const node_set observed = within & ~parent;
    for (std::size_t i = 0; i < 3 * count * count; ++i) {
        const node_set child = only(i % count), family = child | parents[i % count];
        if (influenced & family) influenced |= child;
        within |= influenced & utilities;
        if (within & child) within |= family;
        if (within & child && reached & family) reached |= family & ~observed;
    }
    return reached & influenced & utilities;
}

TEST(limid_reduction, leaves_requisite_links) {
    for (unsigned seed = 1; seed <= 300 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const owned_domain domain = network("cd dd uo dd cd cd uo cd dd");
        const nodes all = nodes_of(domain.get());
        node_sets before(count);
        for (std::size_t links = 10 + random() % 50; links > 0; --links)
            if (const std::size_t child = random() % count, parent = random() % count;
                q_node_add_parent(all[child], all[parent]) == q_error_none)
                before[child] |= only(parent);
        node_sets expected = before;
        for (int i = 0; i < 1000; ++i) {  // one link after another in random order
            const std::size_t decision = all_decisions[random() % 3];
            const node_set parent = only(random() % count);
            if (!is_requisite(expected, decision, parent)) expected[decision] &= ~parent;
        }
        EXPECT_NE(q_domain_minimize_limid(domain.get()), std::size_t(-1));
        for (std::size_t i = 0; i < count * count; ++i) {
            const nodes parents = listed(q_node_get_parents(all[i / count]));
            EXPECT_EQ(std::ranges::count(parents, all[i % count]), expected[i / count] >> i % count & 1) << i;
        }
    }
}

}  // namespace
