// Evidence on linked nodes. Nothing public links nodes yet.
#include "fault_plan.h"
#include "network_building.h"
#include "node.h"
#include "texts.h"

namespace {

using states = std::vector<int64_t>;

// A node of one domain linked to the first of two in another, which is compiled, and that one to the second.
struct chain {
    explicit chain(const std::string& letters) : domains{network(letters), network(letters + " " + letters)} {
        for (const owned_domain& domain : domains)
            for (q_node_t node : nodes_of(domain.get())) {
                q_node_set_number_of_states(node, 2);
                q_node_set_cg_variance(node, 0, 1);
                if (!n.empty()) n.back()->linked = node;
                n.push_back(node);
            }
        q_domain_compile(domains[1].get());
        propagate();
    }
    void propagate() {
        EXPECT_EQ(q_domain_propagate(domains[1].get(), q_equilibrium_sum, q_mode_normal), q_error_none);
    }
    states selected() const {
        return {q_node_get_selected_state(n[0]), q_node_get_selected_state(n[1]),
                q_node_get_selected_state(n[2])};
    }

    owned_domain domains[2];
    std::vector<q_node_t> n;
};

TEST(linked_nodes, take_evidence_from_each_other) {
    chain tested("cd");
    const auto& n = tested.n;
    q_node_enter_finding(n[2], 0, 0.25);
    q_node_enter_finding(n[0], 1, 0.5);
    EXPECT_EQ(tested.selected(), (states{-2, -2, -2}));
    EXPECT_EQ(q_node_get_entered_finding(n[2], 0), 1.0) << "the whole vector";
    EXPECT_EQ(q_domain_evidence_to_propagate(tested.domains[1].get()), 1u);
    tested.propagate();
    EXPECT_EQ(q_node_get_propagated_finding(n[0], 1), 0.5) << "of the first linked node";
    q_node_retract_findings(n[0]);
    q_node_select_state(n[1], 1);
    q_node_retract_findings(n[2]);
    q_node_select_state(n[0], 1);
    EXPECT_EQ(tested.selected(), (states{1, 1, -1})) << "the one in between had the state";
    q_node_retract_findings(n[1]);
    q_node_select_state(n[2], 0);
    q_node_retract_findings(n[0]);
    EXPECT_EQ(tested.selected(), (states{-1, -1, 0})) << "the one in between had no evidence";
    tested.domains[0]->owner = &tested;
    EXPECT_EQ(q_node_enter_finding(n[0], 0, 0.5), q_error_usage);

    chain continuous("cc");
    q_node_enter_value(continuous.n[0], 2.5);
    EXPECT_EQ(q_node_get_entered_value(continuous.n[2]), 2.5);
}

TEST(linked_nodes, are_written_to_case_files_as_those_they_are_linked_to) {
    chain tested("cd");
    const auto& n = tested.n;
    const temporary_file file;
    const char* const names[] = {"first", "second", "third"};
    for (std::size_t i = 0; i < 3; ++i) q_node_set_name(n[i], names[i]);
    q_node_set_label(n[1], "L");
    q_node_select_state(n[0], 1);
    q_node_select_state(n[1], 0);
    EXPECT_EQ(q_domain_save_case(tested.domains[0].get(), file.path.c_str()), q_error_none);
    EXPECT_EQ(file.contents(), "second: #0\t% \"L\"\n");

    std::ofstream(file.path) << "first: (0.5 1)";
    EXPECT_EQ(q_domain_parse_case(tested.domains[0].get(), file.path.c_str(), nullptr, nullptr), 0);
    EXPECT_EQ(tested.selected(), (states{-2, -2, -2}));
}

TEST(linked_nodes, take_all_or_nothing) {
    for (std::size_t n = 0; n < 3 && fault_plan::are_possible(); ++n) {
        chain tested("cd");
        fault_plan fault(n, false);
        EXPECT_EQ(q_node_enter_finding(tested.n[0], 0, 0.5), q_error_no_memory);
        fault.stop();
        EXPECT_EQ(tested.selected(), (states{-1, -1, -1}));
    }
}

}  // namespace
