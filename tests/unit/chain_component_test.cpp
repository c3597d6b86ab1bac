// Nodes joined by undirected links: the potentials that they share follow every change of the network.
#include "chain_component.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "api_frame.h"
#include "node.h"
#include "scenarios.h"
#include "texts.h"

using namespace quarn;
using scenarios::call, scenarios::expect_code, scenarios::expect_survival, scenarios::tested_call;

namespace {

node& named(q_domain_t owner, const char* name) { return *q_domain_get_node_by_name(owner, name); }

template <class List>
std::string names(const List& nodes) {
    std::string text;
    for (node* listed : nodes) text += node_name(*listed);
    return text;
}

// The components: "MEMBERS: POTENTIAL = NUMBERS;".
std::string shared(q_domain_t owner) {
    std::ostringstream text;
    for (const auto& component : owner->components) {
        text << names(component->members) << ':';
        for (const auto& potential : component->potentials) {
            text << ' ' << names(potential->nodes) << " =";
            for (double number : potential->data) text << ' ' << number;
            text << ';';
        }
    }
    return text.str();
}

owned_domain six_nodes(const std::string& potentials) {
    std::string text = "net {} ";
    for (char name : std::string("PRABCX")) text += std::string("node ") + name + R"( {states=("n" "y");} )";
    return read(text + potentials);
}

// P --> A, B; A -- B -- C --> X.
owned_domain chain() {
    return six_nodes(R"(potential (A B | P) { data = (1 2 3 4 5 6 7 8); }
        potential (A | P) { data = (1 2 3 4); experience = (5 6); }
        potential (C B) { data = (1 2 3 4); } potential (X | C) { data = (1 2 3 4); })");
}

TEST(chain_component, is_merged_in_the_place_of_the_oldest) {
    const owned_domain domain = six_nodes(R"(potential (A B) { data = (1 1 1 1); }
        potential (C X) { data = (2 2 2 2); } potential (P R) { data = (3 3 3 3); }
        potential (R A) { data = (-0 4 4 4); })");
    EXPECT_EQ(shared(domain.get()), "ABPR: AB = 1 1 1 1; PR = 3 3 3 3; RA = -0 4 4 4;CX: CX = 2 2 2 2;");
    EXPECT_EQ(named(domain.get(), "P").component, domain->components[0].get());
}

// An own potential tells the order of all parents; a shared one before it may have drawn links.
TEST(chain_component, parents_are_linked_to_all_children) {
    const owned_domain domain = six_nodes(R"(potential (B | C) { data = (1 2 3 4); }
        potential (A B | P R) { data = (1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1); }
        potential (A | X R P) { data = (1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16); experience = (1 2 3 4 5 6 7 -8);
                                fading = ((0.5 1) (1 1) (1 1) (1 1)); })");
    node &a = named(domain.get(), "A"), &b = named(domain.get(), "B");
    EXPECT_EQ(names(a.parents), "XRP");
    EXPECT_EQ(names(a.own_table->nodes), "XRPA");
    EXPECT_EQ(a.own_table->data[15], 16);
    EXPECT_EQ(names(a.experience->nodes) + names(a.fading->nodes), "XRPXRP");
    EXPECT_EQ(a.experience->data[7], -8);
    EXPECT_EQ(a.fading->data[0], 0.5);
    EXPECT_EQ(names(b.parents), "CPR");
    EXPECT_EQ(names(b.own_table->nodes), "RPCB");
    EXPECT_EQ(names(named(domain.get(), "R").children), "AB");
    EXPECT_EQ(names(parents_of(*a.component)), "XRPC");
}

enum : std::size_t { P, R, A, B, C, X };

tested_call join(const std::string& children, const std::string& parents) {
    return [=](q_domain_t owner, const auto&) {
        const auto all = [&](const std::string& letters) {
            std::vector<node*> list;
            for (char letter : letters) list.push_back(&named(owner, std::string(1, letter).c_str()));
            return list;
        };
        return api_status({}, [&] { join_by_potential(*owner, all(children), all(parents)); });
    };
}

std::string state(q_domain_t owner) { return shared(owner) + digest(owner); }

const char* const reversed[] = {"y", "n", nullptr};

// What the nodes of chain() share after each edit, whichever allocation fails on the way: all of it, or what it was.
TEST(chain_component, potentials_follow_every_change) {
    const std::string bc = " CB = 1 2 3 4;";
    const struct {
        tested_call change;
        std::string shared, parents_of_a_and_b = "P P";
    } rows[] = {
        {call(q_node_set_number_of_states, P, 3), "PAB = 1 2 3 4 5 6 7 8 1 2 3 4;" + bc},
        {call(q_node_set_number_of_states, A, 3), "PAB = 1 2 3 4 1 2 5 6 7 8 5 6;" + bc},
        {call(q_node_set_number_of_states, B, 1), "PAB = 1 3 5 7; CB = 1 3;"},
        {call(q_node_reorder_states, P, reversed), "PAB = 5 6 7 8 1 2 3 4;" + bc},
        {call(q_node_reorder_states, B, reversed), "PAB = 2 1 4 3 6 5 8 7; CB = 2 1 4 3;"},
        {call(q_node_remove_parent, A, P), "AB = 1 2 3 4;" + bc, " P"},
        {call(q_node_remove_parent_keep_state, B, P, 1), "AB = 5 6 7 8;" + bc, "P "},
        {call(q_node_delete, P), "AB = 1 2 3 4;" + bc, " "},
        {call(q_node_switch_parent, A, P, R), "RAB = 1 2 3 4 5 6 7 8;" + bc, "R PR"},
        {call(q_node_add_parent, C, P), "PAB = 1 2 3 4 5 6 7 8;" + bc},
        {call(q_node_clone, A), "PAB = 1 2 3 4 5 6 7 8;" + bc},
        {join("A", "R"), "PAB = 1 2 3 4 5 6 7 8;" + bc + " RA =;", "PR P"},
        {join("RX", "P"), "PAB = 1 2 3 4 5 6 7 8;" + bc + "RX: PRX =;"},
    };
    const auto with_all_tables = [] {
        owned_domain domain = chain();
        digest(domain.get());
        return domain;
    };
    std::size_t row = 0;
    for (const auto& [change, expected, parents] : rows) {
        SCOPED_TRACE(row);
        const owned_domain domain = chain();
        ASSERT_EQ(change(domain.get(), nodes_of(domain.get())), q_error_none);
        EXPECT_EQ(shared(domain.get()), "ABC: " + expected);
        EXPECT_EQ(names(named(domain.get(), "A").parents) + ' ' + names(named(domain.get(), "B").parents),
                  parents);
        expect_survival(with_all_tables, change, true, row++, state);
    }
}

TEST(chain_component, refuses_what_would_break_it) {
    const struct {
        q_error_t code;
        tested_call change;
    } rows[] = {
        {q_error_usage, call(q_node_delete, B)},
        {q_error_usage, call(q_node_set_category, B, q_category_decision)},
        {q_error_cyclic_network, call(q_node_add_parent, A, B)},
        {q_error_cyclic_network, call(q_node_add_parent, A, X)},
        {q_error_cyclic_network, call(q_node_add_parent, P, C)},
        {q_error_cyclic_network, call(q_node_add_parent, P, X)},
        {q_error_cyclic_network, call(q_node_switch_parent, A, P, X)},
        {q_error_cyclic_network, join("RA", "C")},
        {q_error_cyclic_network, join("XAR", "")},
        {q_error_cyclic_network, join("AP", "")},
        {q_error_cyclic_network, join("RP", "X")},
        {q_error_usage, join("RA", "R")},
    };
    std::size_t row = 0;
    for (const auto& [code, change] : rows) expect_code(chain, code, change, row++, state);
}

}  // namespace
