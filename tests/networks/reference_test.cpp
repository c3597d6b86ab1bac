// Real networks against answers that were computed by other means; skipped where the networks are not at hand.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <quarn.h>

#include "texts.h"

namespace {

using json = nlohmann::json;

// A network with the answers to some scenarios.
struct checked_network {
    // Of a file, or of the text of one.
    explicit checked_network(const std::string& model, double tolerance)
        : domain_(q_net_parse_domain(model.c_str(), nullptr, nullptr)), tolerance_(tolerance) {}

    void check(const json& reference) {
        ASSERT_NE(domain_, nullptr) << q_error_description(static_cast<uint32_t>(q_error_code()));
        ASSERT_EQ(q_domain_compile(domain_.get()), q_error_none);
        for (const json& scenario : reference["scenarios"]) {
            scenario_ = scenario["name"];
            enter_case(scenario["case"]);
            check_scenario(scenario);
            if (scenario.contains("updated")) check_updating(scenario, reference);
        }
    }

    q_node_t node(const std::string& name) {
        q_node_t found = q_domain_get_node_by_name(domain_.get(), name.c_str());
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    void enter_case(const json& findings) {
        ASSERT_EQ(q_domain_retract_findings(domain_.get()), q_error_none);
        for (const auto& [name, finding] : findings.items()) {
            if (q_node_get_kind(node(name)) == q_kind_continuous)
                ASSERT_EQ(q_node_enter_value(node(name), finding.get<double>()), q_error_none) << name;
            else if (finding.is_number())
                ASSERT_EQ(q_node_select_state(node(name), finding.get<std::size_t>()), q_error_none) << name;
            else
                for (std::size_t state = 0; state < finding.size(); ++state)
                    ASSERT_EQ(q_node_enter_finding(node(name), state, finding[state].get<double>()),
                              q_error_none);
        }
    }

    void check_scenario(const json& scenario) {
        ASSERT_EQ(q_domain_propagate(domain_.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
        compare(q_domain_get_log_normalization_constant(domain_.get()), scenario["log_p"], "log_p");
        check_states(q_node_get_belief, scenario, "beliefs");
        check_nodes(q_node_get_mean, scenario, "means");
        check_nodes(q_node_get_variance, scenario, "variances");
        if (scenario.contains("expected_utility")) check_utilities(scenario);
        if (!scenario.contains("max_beliefs")) return;
        ASSERT_EQ(q_domain_propagate(domain_.get(), q_equilibrium_max, q_mode_normal), q_error_none);
        compare(q_domain_get_log_normalization_constant(domain_.get()), scenario["log_max"], "log_max");
        check_states(q_node_get_belief, scenario, "max_beliefs");
    }

    void check_utilities(const json& scenario) {
        scale_ = 1;
        for (const auto& [name, utility] : scenario["utilities"].items())
            scale_ = std::max(scale_, std::abs(utility.get<double>()));
        compare(q_domain_get_expected_utility(domain_.get()), scenario["expected_utility"],
                "expected utility");
        check_nodes([](q_node_t asked) { return q_node_get_expected_utility(asked, 0); }, scenario,
                    "utilities");
        if (q_junction_tree_get_next(q_domain_get_first_junction_tree(domain_.get())) == nullptr)
            check_states(q_node_get_expected_utility, scenario, "expected_utility_given_state");
        scale_ = 1;
    }

    // From uniform policies, to the result of one of the orders in which decisions can be visited.
    void check_updating(const json& scenario, const json& reference) {
        ASSERT_EQ(q_domain_propagate(domain_.get(), q_equilibrium_sum, q_mode_normal), q_error_none);
        ASSERT_EQ(q_domain_update_policies(domain_.get()), q_error_none) << scenario_;
        const double utility = q_domain_get_expected_utility(domain_.get());
        const auto is_found = [&](const json& result) {
            bool found = is_near(utility, result["expected_utility"]);
            for (const auto& [name, rows] : result["policies"].items()) {
                const double* entry = q_table_get_data(q_node_get_table(node(name)));
                for (const json& row : rows)
                    for (const json& probability : row) found = is_near(*entry++, probability) && found;
            }
            return found;
        };
        EXPECT_TRUE(std::ranges::any_of(scenario["updated"], is_found)) << scenario_ << ": " << utility;
        if (reference["kind"] == "influence diagram" && scenario["case"].empty())
            compare(utility, reference["optimal_expected_utility"], "optimum");
        for (const json& decision : reference["decisions"]) {
            q_table_t policy = q_node_get_table(node(decision));
            const double states = static_cast<double>(q_node_get_number_of_states(node(decision)));
            std::fill_n(q_table_get_data(policy), q_table_get_size(policy), 1 / states);
            ASSERT_EQ(q_node_touch_table(node(decision)), q_error_none);
        }
    }
    bool is_near(double found, double expected, double scale = 1) const {
        return std::abs(found - expected) <= tolerance_ * std::max(scale, std::abs(expected));
    }
    void compare(double found, double expected, const std::string& what) const {
        EXPECT_TRUE(is_near(found, expected, scale_))
            << scenario_ << ": " << what << ": " << found << " instead of " << expected;
    }

    template <class Read>
    void check_nodes(const Read& read, const json& scenario, const std::string& key) {
        if (!scenario.contains(key)) return;
        for (const auto& [name, expected] : scenario[key].items())
            compare(read(node(name)), expected, key + " of " + name);
    }

    template <class Read>
    void check_states(const Read& read, const json& scenario, const std::string& key) {
        EXPECT_GT(scenario[key].size(), 0u) << key;
        for (const auto& [name, states] : scenario[key].items()) {
            ASSERT_EQ(q_node_get_number_of_states(node(name)), states.size()) << name;
            for (std::size_t state = 0; state < states.size(); ++state)
                if (!states[state].is_null())
                    compare(read(node(name), state), states[state], key + " of " + name);
        }
    }

    owned_domain domain_;
    const double tolerance_;
    std::string scenario_;
    double scale_ = 1;  // of the numbers being compared
};

// Written and read again it is written as before.
void check_network(const std::string& name, const std::string& kind = "") {
    const std::filesystem::path folder = std::filesystem::path(QUARN_NETWORKS_DIR) / kind;
    const std::filesystem::path model = folder / (name + ".net");
    if (!std::filesystem::exists(model)) GTEST_SKIP() << "the reference networks are not here";
    SCOPED_TRACE(name);
    const json reference = json::parse(std::ifstream(folder / "expected" / (name + ".json")));
    checked_network checked(model, 1e-9);
    const std::string text = written(checked.domain_.get());
    EXPECT_EQ(written(read(text).get()), text);
    checked.check(reference);
}

class Reference : public testing::TestWithParam<const char*> {};
TEST_P(Reference, AnswersHold) { check_network(GetParam()); }
INSTANTIATE_TEST_SUITE_P(Networks, Reference,
                         testing::Values("asia", "cancer", "earthquake", "survey", "sachs", "child",
                                         "insurance", "water", "mildew", "alarm", "barley", "hailfinder",
                                         "win95pts", "pigs"),
                         [](const auto& network) { return std::string(network.param); });

TEST(ReferenceKinds, AnswersHoldForContinuousNodes) {
    for (const char* name : {"cg01", "cg02", "cg03", "cg04"}) check_network(name, "cg");
}

TEST(ReferenceKinds, AnswersHoldForDecisionsAndUtilities) {
    for (const char* name : {"limid01", "limid02", "limid03"}) check_network(name, "limid");
}

// Its tables take 1.5 GB.
TEST(ReferenceLarge, AnswersHoldForMunin1) { check_network("munin1"); }

}  // namespace
