// D-connected and d-separated nodes in special cases; chain_inference_test.cpp asks in random networks.
#include <map>
#include <sstream>

#include "scenarios.h"

using namespace scenarios;

namespace {

using node_set = std::uint64_t;  // bit i: node i in creation order
constexpr auto connected_nodes = q_domain_get_d_connected_nodes;
constexpr auto separated_nodes = q_domain_get_d_separated_nodes;
const q_node_t nobody[] = {nullptr};

node_set only(std::size_t node) { return node_set{1} << node; }

// Each node so many times, and a null at the end.
nodes members(const nodes& all, node_set set, std::size_t times) {
    nodes list;
    for (std::size_t i = 0; i < times * all.size(); ++i)
        if ((set & only(i / times)) != 0) list.push_back(all[i / times]);
    list.push_back(nullptr);
    return list;
}

void expect_answer(q_domain_t domain, const node_set (&lists)[3], node_set expected, q_error_t code = 0) {
    const nodes all = nodes_of(domain);
    const nodes asked[] = {members(all, lists[0], 2), members(all, lists[1], 2), members(all, lists[2], 2)};
    for (auto question : {connected_nodes, separated_nodes}) {
        const q_node_t* answer = question(domain, asked[0].data(), asked[1].data(), asked[2].data());
        ASSERT_EQ(outcome(answer), code);
        EXPECT_TRUE(answer == nullptr || listed(answer) == listed(members(all, expected, 1).data()));
        expected = ~expected;
    }
}

// Nodes; links; sources, hard and soft evidence, and what is connected (!: invalid evidence; ?: usage). Links into
// functions and decisions lead down only, and evidence must not depend on a decision that is not made.
const char* const cases[][3] = {
    {"", "", ",,,"},
    {"cd cd cd", "01 12", ",12,1, 0,0,, 02,2,2,01 0,,,012"},
    {"cd fd cd", "01 12", "0,,,012 2,,,12 0,1,,0"},
    {"cd cd cd fd cd", "02 12 23 43", "0,,3,023 0,3,,02"},
    {"cd fo cd cd", "01 12 32", "0,,,012 2,,,23 0,,2,0123 0,2,,01 1,,,? 0,1,,?"},
    {"cd dd cd uo", "01 12 13 23", "0,,,0123 1,,,123 12,,,123 01,,,0123 2,1,,23 0,1,1,0 0,12,,0"},
    {"cd dd cd uo", "01 12 13 23", "2,,,! 0,,1,! 1,2,,! 1,,2,! 3,,,? 1,,3,?"},
    {"cd cd cd dd cd", "02 12 23 43", "0,3,,02 03,,,023"},
};

TEST(d_separation, special_cases) {
    std::map<char, q_error_t> codes{{'!', q_error_invalid_evidence}, {'?', q_error_usage}};
    for (const auto& [letters, links, queries] : cases) {
        std::istringstream words(queries);
        for (std::string word; words >> word;) {
            SCOPED_TRACE(std::string(letters) + ": " + word);
            node_set s[4] = {}, *set = s;
            for (char c : word)
                if (set += c == ','; c >= '0' && c <= '9') *set |= only(std::size_t(c - '0'));
            expect_answer(network(letters, links).get(), {s[0], s[1], s[2]}, s[3], codes[word.back()]);
        }
    }
}

// The last answer is one of the lists, and the next one needs more room.
TEST(d_separation, replaces_an_answer_when_nothing_can_fail_any_more) {
    const q_node_t* last = nullptr;
    const auto build = [&] {
        owned_domain domain = network("cd");
        last = separated_nodes(domain.get(), nobody, nobody, nobody);
        q_node_t first = node_at(domain.get(), 0);
        for (int i = 0; i < 9; ++i) q_node_add_parent(new_node(domain.get(), "cd"), first);
        return domain;
    };
    expect_survivals(build, [&](q_domain_t domain, const nodes& n) {
        const q_node_t* answer = connected_nodes(domain, last, nobody, last + 1);
        EXPECT_TRUE(answer != nullptr ? std::equal(n.begin(), n.end(), answer) : last[0] == n[0] && !last[1]);
        return outcome(answer);
    });
    const owned_domain domain = build(), other = network("cd");
    const q_node_t foreign[] = {node_at(other.get(), 0), nullptr};
    EXPECT_EQ(outcome(connected_nodes(domain.get(), nobody, nobody, foreign)), q_error_usage);
}

TEST(d_separation, goes_along_chains_of_any_length) {
    const owned_domain domain(q_domain_new());
    q_node_t ends[][2] = {{new_node(domain.get(), "cd"), nullptr}, {}};
    ends[1][0] = ends[0][0];
    for (int i = 1; i < 100000; ++i) {
        const q_node_t next = new_node(domain.get(), "cd");
        q_node_add_parent(next, ends[1][0]);
        ends[1][0] = next;
    }
    for (const auto& end : ends)
        EXPECT_EQ(listed(connected_nodes(domain.get(), end, nobody, nobody)).size(), 100000u);
}

}  // namespace
