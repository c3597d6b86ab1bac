// Chain graphs: answers against the product of all tables and normalisers, d-separation, and what is written and refused.
#include <cmath>
#include <numeric>
#include <random>
#include <sstream>

#include "scenarios.h"
#include "texts.h"

using namespace scenarios;

namespace {

using indices = std::vector<std::size_t>;
using generator = std::mt19937;
using weights = std::vector<numbers>;  // evidence: for each node one for each state

struct factor {
    indices over;  // the last one varies fastest
    numbers data;
};

bool has(const indices& list, std::size_t i) { return std::find(list.begin(), list.end(), i) != list.end(); }

const std::string two_states = " { states = (\"a\" \"b\"); }\n";

double draw(generator& random) { return random() % 6 == 0 ? 1e-3 : 0.1 + double(random() % 1000) / 500; }

// Blocks of nodes: single ones and chain components. Whatever is above a node is in an earlier block. In a diagram the
// last two nodes are utilities, and one of the others is a decision.
struct chain_network {
    chain_network(generator& random, std::size_t count, bool is_diagram, bool with_zeros,
                  std::size_t largest_block = 4)
        : block(count), letters(count, 'c') {
        const std::size_t chance_end = is_diagram ? count - 2 : count;
        for (std::size_t i = 0, size = 1; i < count; i += size) {
            size = std::min<std::size_t>(1 + random() % largest_block, i < chance_end ? chance_end - i : 1);
            if (i >= chance_end)
                letters[i] = 'u';
            else if (is_diagram && i >= 2 && letters.find('d') == std::string::npos)
                letters[i] = 'd';
            if (letters[i] != 'c') size = 1;
            std::fill_n(block.begin() + std::ptrdiff_t(i), size, i);
        }
        std::ostringstream text;
        text.precision(17);
        for (std::size_t i = 0; i < count; ++i) {
            states.push_back(letters[i] == 'u' ? 1 : i % 3 == 2 ? 3 : 2);
            text << (letters[i] == 'c' ? "node n" : letters[i] == 'd' ? "decision n" : "utility n") << i;
            text << (states[i] == 1   ? "{}"
                     : states[i] == 2 ? two_states
                                      : " { states = (\"a\" \"b\" \"c\"); }\n");
            if (block[i] == i) continue;
            indices children{i,
                             block[i] + random() % (i - block[i])};  // joined to an earlier member, or to two
            if (i == block[i] + 2 && random() % 2 == 0) children = {i, i - 1, i - 2}, potentials.pop_back();
            potentials.push_back({above(random, i, 0.4), {}});
            potentials.back().over.insert(potentials.back().over.end(), children.begin(), children.end());
        }
        for (factor& shared : potentials) {
            std::string parents, children, data;
            for (std::size_t node : shared.over)
                (block[node] == block_of(shared) ? children : parents) += " n" + std::to_string(node);
            text << "potential (" << children << " |" << parents << ") { data = (";
            for (std::size_t entries = size_of(shared.over); entries > 0; --entries)
                shared.data.push_back(with_zeros && random() % 3 == 0 ? 0 : draw(random));
            for (double number : shared.data) text << ' ' << number;
            text << "); }\n";
        }
        domain = read("net {}" + text.str());
        all = nodes_of(domain.get());
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t parent : above(random, i, is_member(i) ? 0.1 : 0.4))
                q_node_add_parent(all[i], all[parent]);
        for (std::size_t i = 0; i < count; ++i)
            if (!is_member(i) || random() % 2 == 0) fill_own(random, i);
    }

    indices above(generator& random, std::size_t node, double density) const {
        indices found;
        for (std::size_t i = 0; i < block[node] && found.size() < 2; ++i)
            if (letters[i] != 'u' && double(random() % 1000) < 1000 * density) found.push_back(i);
        return found;
    }
    std::size_t block_of(const factor& shared) const { return block[shared.over.back()]; }
    bool is_member(std::size_t node) const { return std::count(block.begin(), block.end(), block[node]) > 1; }
    indices members_of(std::size_t first) const {
        indices members;
        for (std::size_t i = 0; i < block.size(); ++i)
            if (block[i] == first) members.push_back(i);
        return members;
    }
    indices parents_of(std::size_t node) const {
        indices parents;
        for (q_node_t parent : listed(q_node_get_parents(all[node])))
            parents.push_back(std::size_t(std::find(all.begin(), all.end(), parent) - all.begin()));
        return parents;
    }
    std::size_t size_of(const indices& over) const {
        std::size_t size = 1;
        for (std::size_t node : over) size *= states[node];
        return size;
    }
    factor own(std::size_t node) const {
        factor made{parents_of(node), data_of(q_node_get_table(all[node]))};
        if (letters[node] != 'u') made.over.push_back(node);
        return made;
    }
    void fill_own(generator& random, std::size_t node) const {
        numbers data(size_of(own(node).over));
        for (double& number : data) number = draw(random);
        for (std::size_t row = 0; letters[node] != 'u' && row < data.size(); row += states[node]) {
            const double sum = std::accumulate(&data[row], &data[row] + states[node], 0.0);
            for (std::size_t i = row; i < row + states[node]; ++i) data[i] /= sum;
        }
        set_data(q_node_get_table(all[node]), data);
        q_node_touch_table(all[node]);
    }
    std::size_t position(const indices& over, const indices& x) const {
        std::size_t at = 0;
        for (std::size_t node : over) at = at * states[node] + x[node];
        return at;
    }
    indices configuration(std::size_t at) const {
        indices x(states.size());
        for (std::size_t i = x.size(); i-- > 0; at /= states[i]) x[i] = at % states[i];
        return x;
    }
    // Calls visit(configuration, its probability), decisions or utilities left out; whether all normalisers are positive.
    template <class Visit>
    bool enumerate(char left_out, const Visit& visit) const {
        indices everything(all.size());
        std::iota(everything.begin(), everything.end(), 0);
        numbers p(size_of(everything), 1.0);
        bool is_normal = true;
        for (std::size_t first : everything) {
            std::vector<factor> tables;
            for (std::size_t i : members_of(first))
                if (letters[i] != 'u' && letters[i] != left_out) tables.push_back(own(i));
            for (const factor& shared : potentials)
                if (block_of(shared) == first) tables.push_back(shared);
            if (tables.empty()) continue;
            numbers product(p.size(), 1.0), sum(p.size());
            indices place(p.size());  // of the sum
            for (std::size_t c = 0; c < p.size(); ++c) {
                indices x = configuration(c);
                for (const factor& table : tables) product[c] *= table.data[position(table.over, x)];
                for (std::size_t member : members_of(first)) x[member] = 0;
                sum[place[c] = position(everything, x)] += product[c];
            }
            for (std::size_t c = 0; c < p.size(); ++c)
                is_normal &= sum[place[c]] > 0, p[c] *= product[c] / sum[place[c]];
        }
        for (std::size_t c = 0; c < p.size(); ++c) visit(configuration(c), p[c]);
        return is_normal;
    }

    indices states, block;  // block: the first node of it
    std::string letters;
    std::vector<factor> potentials;
    owned_domain domain;
    nodes all;
};

// Enters evidence, and checks what follows from it.
void expect_answers(const chain_network& tested, const weights& evidence, bool maximise, bool retracted) {
    q_domain_t domain = tested.domain.get();
    weights expected(tested.all.size());
    double p_of_evidence = 0;
    const auto add = [&](double& to, double p) { to = maximise ? std::max(to, p) : to + p; };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i].resize(tested.states[i]);
        for (std::size_t state = 0; state < tested.states[i]; ++state)
            q_node_enter_finding(tested.all[i], state, evidence[i][state]);
    }
    const bool is_normal = tested.enumerate('u', [&](const indices& x, double p) {
        double weight = p;
        for (std::size_t i = 0; i < x.size(); ++i) weight *= evidence[i][x[i]];
        add(p_of_evidence, weight);
        for (std::size_t i = 0; i < x.size(); ++i)
            add(expected[i][x[i]], retracted ? weight / evidence[i][x[i]] : weight);
    });
    const q_status_t status = q_domain_propagate(domain, maximise ? q_equilibrium_max : q_equilibrium_sum,
                                                 retracted ? q_mode_fast_retraction : q_mode_normal);
    const bool is_possible = is_normal && p_of_evidence > 0;
    ASSERT_EQ(status, is_possible ? q_error_none
                      : is_normal ? q_error_inconsistency_or_underflow
                                  : q_error_chain_graph);
    if (!is_possible) return;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        double constant = 0;
        for (double p : expected[i]) add(constant, p);
        for (std::size_t state = 0; state < tested.states[i] && tested.letters[i] != 'u'; ++state)
            EXPECT_NEAR(q_node_get_belief(tested.all[i], state), expected[i][state] / constant, 1e-12) << i;
    }
    const double found = q_domain_get_log_normalization_constant(domain);
    EXPECT_NEAR(found, retracted ? found : std::log(p_of_evidence), 1e-11);
}

TEST(ChainGraphs, AgreeWithEnumeration) {
    for (unsigned seed = 1; seed <= 400 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        generator random(seed);
        const bool excludes = seed % 4 == 0, with_zeros = seed % 5 == 0;
        const chain_network tested(random, 8, false, with_zeros);
        weights evidence, fixed;
        nodes excluded;
        for (std::size_t i = 0; i < 8; ++i) {
            fixed.emplace_back(tested.states[i], 1.0);
            evidence.push_back(fixed[i]);
            const bool is_excluded = excludes && i < 7 && random() % 3 == 0;
            if (!is_excluded && random() % 3 != 0) continue;
            const double others = is_excluded || (with_zeros && random() % 2 == 0) ? 0 : 0.4;
            std::fill(evidence[i].begin(), evidence[i].end(), others);
            evidence[i][random() % tested.states[i]] = 1;
            if (!is_excluded) continue;
            fixed[i] = evidence[i];
            excluded.push_back(tested.all[i]);
        }
        excluded.push_back(nullptr);
        q_domain_set_excluded_nodes(tested.domain.get(), excluded.data());
        const auto method = q_triangulation_method_t(15 + seed % 6);
        ASSERT_EQ(q_domain_triangulate(tested.domain.get(), method), q_error_none);
        ASSERT_EQ(q_domain_compile(tested.domain.get()), q_error_none);
        for (const weights& entered : {fixed, evidence, fixed}) {
            for (bool maximise : {false, true}) expect_answers(tested, entered, maximise, false);
            if (!with_zeros && !excludes) expect_answers(tested, entered, seed % 2 == 0, true);
            tested.fill_own(random, random() % 8);
        }
    }
}

TEST(ChainGraphs, TakePartInDecisions) {
    for (unsigned seed = 1; seed <= 300 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        generator random(seed);
        const chain_network tested(random, 9, true, false);
        q_domain_t domain = tested.domain.get();
        const std::size_t decision = tested.letters.find('d');
        const factor policy = tested.own(decision), utilities[] = {tested.own(7), tested.own(8)};
        const auto utility_of = [&](const indices& x) {
            double sum = 0;
            for (const factor& utility : utilities) sum += utility.data[tested.position(utility.over, x)];
            return sum;
        };
        double expected = 0, best = 0;
        numbers decided(policy.data.size());
        tested.enumerate('u', [&](const indices& x, double p) { expected += p * utility_of(x); });
        tested.enumerate('d', [&](const indices& x, double p) {
            decided[tested.position(policy.over, x)] += p * utility_of(x);
        });
        for (auto row = decided.begin(); row != decided.end(); row += std::ptrdiff_t(tested.states[decision]))
            best += *std::max_element(row, row + std::ptrdiff_t(tested.states[decision]));

        ASSERT_EQ(q_domain_compile(domain), q_error_none);
        expect_answers(tested, weights(9, numbers(3, 1.0)), false, false);
        EXPECT_NEAR(q_domain_get_expected_utility(domain), expected, 1e-11);
        std::vector<bool> influenced(9);
        for (std::size_t i = decision + 1; i < 7; ++i)
            for (std::size_t parent : tested.parents_of(i))
                if (parent == decision || influenced[parent])
                    for (std::size_t member : tested.members_of(tested.block[i])) influenced[member] = true;
        for (std::size_t i = 0; i < 7; ++i) {
            if (i == decision) continue;
            q_node_select_state(tested.all[i], 0);
            EXPECT_EQ(q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal),
                      influenced[i] ? q_error_invalid_evidence : q_error_none);
            q_node_retract_findings(tested.all[i]);
        }
        for (bool minimized : {false, true}) {  // links that are not needed are no loss
            q_domain_uncompile(domain);
            if (minimized) q_domain_minimize_limid(domain);
            ASSERT_EQ(q_domain_compile(domain), q_error_none);
            ASSERT_EQ(q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal), q_error_none);
            ASSERT_EQ(q_domain_update_policies(domain), q_error_none);
            EXPECT_NEAR(q_domain_get_expected_utility(domain), best, 1e-11);
        }
    }
}

// What is reached from lists[0] when lists[1] is observed, by ways in the moral graph of the smallest ancestral set with
// the lists and the node asked for [Frydenberg 1990]. As one: where parents and children of a member are those of all.
bool is_connected(const chain_network& tested, const indices (&lists)[3], std::size_t asked, bool as_one) {
    std::vector<bool> within(tested.all.size()), reached(within.size());
    for (const indices& list : lists)
        for (std::size_t i : list) within[i] = true;
    within[asked] = true;
    std::vector<indices> linked;
    for (std::size_t first = within.size(); first-- > 0;) {
        const indices members = tested.members_of(first);
        indices parents;
        if (std::none_of(members.begin(), members.end(), [&](std::size_t i) { return within[i]; })) continue;
        for (std::size_t member : members) {
            linked.push_back(tested.parents_of(member));
            linked.back().push_back(member);
            for (std::size_t parent : tested.parents_of(member)) {
                within[parent] = true;
                const indices mates = as_one ? tested.members_of(tested.block[parent]) : indices{parent};
                parents.insert(parents.end(), mates.begin(), mates.end());
            }
        }
        for (const factor& shared : tested.potentials)
            if (tested.block_of(shared) == first) linked.push_back(shared.over);
        if (as_one) parents.insert(parents.end(), members.begin(), members.end());
        linked.push_back(parents);
    }
    for (std::size_t i : lists[0]) reached[i] = !has(lists[1], i);
    for (std::size_t round = 0; round < within.size(); ++round)
        for (const indices& clique : linked)
            if (std::any_of(clique.begin(), clique.end(), [&](std::size_t i) { return reached[i]; }))
                for (std::size_t i : clique) reached[i] = !has(lists[1], i);
    return reached[asked];
}

TEST(ChainGraphs, AreSeparatedAsInTheirMoralGraphs) {
    for (unsigned seed = 1; seed <= 3000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        generator random(seed);
        const chain_network tested(random, 9, false, false, seed % 2 == 0 ? 4 : 1);
        indices lists[3];
        nodes asked[3];
        bool members_are_observed = false;
        for (std::size_t list = 0; list < 3; ++list) {
            for (std::size_t i = 0; i < 9; ++i) {
                if (random() % 4 != 0) continue;
                lists[list].push_back(i);
                asked[list].push_back(tested.all[i]);
                members_are_observed |= list == 1 && tested.is_member(i);
            }
            asked[list].push_back(nullptr);
        }
        const auto ask = [&](auto question) {
            return listed(question(tested.domain.get(), asked[0].data(), asked[1].data(), asked[2].data()));
        };
        const nodes connected = ask(q_domain_get_d_connected_nodes);
        EXPECT_EQ(connected.size() + ask(q_domain_get_d_separated_nodes).size(), 9u);
        for (std::size_t i = 0; i < 9; ++i) {
            const bool is = std::count(connected.begin(), connected.end(), tested.all[i]) > 0;
            EXPECT_EQ(is, is_connected(tested, lists, i, true)) << i;
            const bool exactly = is_connected(tested, lists, i, false);
            EXPECT_TRUE(members_are_observed ? is || !exactly : is == exactly) << i;
        }
    }
}

// Members in a row, each likely to be as the one before, and potentials of another size in a state of the parent.
TEST(ChainGraphs, HaveAnyNumberOfMembers) {
    for (const double size : {1.0, 1e-3, 1e10}) {
        SCOPED_TRACE(size);
        std::ostringstream text;
        text << "node p" << two_states << "node x0" << two_states;
        for (std::size_t i = 1; i < 200; ++i)
            text << "node x" << i << two_states << "potential (x" << i - 1 << " x" << i
                 << " | p) { data = (2 1 1 2 " << 2 * size << ' ' << size << ' ' << size << ' ' << 2 * size
                 << "); }\n";
        const owned_domain domain = read("net {}" + text.str());
        const nodes all = nodes_of(domain.get());
        ASSERT_EQ(propagate(domain), q_error_none);
        for (q_node_t node : all) EXPECT_NEAR(q_node_get_belief(node, 1), 0.5, 1e-12);
        EXPECT_EQ(q_domain_get_normalization_constant(domain.get()), 1);
        for (std::size_t i : {1u, 2u, 200u}) q_node_select_state(all[i], 0);
        ASSERT_EQ(propagate(domain), q_error_none);
        EXPECT_NEAR(q_domain_get_normalization_constant(domain.get()), 1.0 / 6, 1e-11);
        EXPECT_NEAR(q_node_get_belief(all[3], 0), 2.0 / 3, 1e-12);
        EXPECT_NEAR(q_node_get_belief(all[0], 0), 0.5, 1e-12);
    }
}

// x - y - z, with p above x and y and q above y and z.
owned_domain small(const std::string& last = "1") {
    std::string text;
    for (const char* name : {"p", "q", "x", "y", "z"}) text += "node " + (name + two_states);
    return read("net {}" + text + "potential (x y | p) { data = (1 2 3 4 0 0 0 " + last + "); }" +
                "potential (y z | q) { data = (1 2 3 4 5 6 7 8); }");
}
owned_domain propagated_small() { return propagated(small()); }

TEST(ChainGraphs, RefuseWhatIsNoDistribution) {
    const std::pair<const char*, q_error_t> cases[] = {{"0", q_error_chain_graph},
                                                       {"-1", q_error_invalid_probability_potential},
                                                       {"1e999", q_error_invalid_probability_potential}};
    for (const auto& [last, code] : cases) {
        const owned_domain domain = small(last);
        EXPECT_EQ(propagate(domain), code) << last;
    }
    expect_refusals(propagated_small, q_error_usage, call(q_domain_compress));
}

TEST(ChainGraphs, AreLogged) {
    const owned_domain domain = small();
    const std::string log = logged(domain.get(), [&] { q_domain_compile(domain.get()); });
    for (const char* part : {"\n\nMoral links:\n\n    Marrying p and q\n\n",
                             "    Node z assigned to clique 3\n"
                             "    Chain graph component (x, y, z):\n\tParents assigned to clique 2\n"
                             "    Potential (p, x, y) assigned to clique 1\n"
                             "    Potential (q, y, z) assigned to clique 3\n"})
        EXPECT_NE(log.find(part), std::string::npos) << log;
}

TEST(ChainGraphs, SurviveLackOfMemory) {
    const auto changed = [] {
        owned_domain domain = propagated_small();
        q_node_touch_table(node_at(domain.get(), 2));
        return domain;
    };
    expect_survivals([] { return small(); }, call(q_domain_compile));
    expect_survivals(changed, call(q_domain_propagate, q_equilibrium_sum, q_mode_normal));
}

}  // namespace
