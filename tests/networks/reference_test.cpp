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

#include "owned_domain.h"

namespace {

using json = nlohmann::json;

constexpr double tolerance = 1e-9;

// Differences, relative to the scale of what is compared.
class differences {
public:
    void add(double found, double expected, const std::string& what, double scale = 1) {
        const double difference = std::abs(found - expected) / scale;
        if (!(difference <= tolerance)) ADD_FAILURE() << what << ": " << found << " instead of " << expected;
        largest_ = std::max(largest_, difference);
    }
    double largest() const { return largest_; }

private:
    double largest_ = 0;
};

// A network with the answers to some scenarios.
class checked_network {
public:
    explicit checked_network(const std::string& model)
        : domain_(q_net_parse_domain(model.c_str(), nullptr, nullptr)) {}

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
    double largest_difference() const { return found_.largest(); }

private:
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
        propagate(q_equilibrium_sum);
        check_numbers(q_domain_get_log_normalization_constant(domain_.get()), scenario, "log_p");
        check_states(q_node_get_belief, scenario, "beliefs");
        check_nodes(q_node_get_mean, scenario, "means");
        check_nodes(q_node_get_variance, scenario, "variances");
        if (scenario.contains("expected_utility")) check_utilities(scenario);
        if (!scenario.contains("max_beliefs")) return;
        propagate(q_equilibrium_max);
        check_numbers(q_domain_get_log_normalization_constant(domain_.get()), scenario, "log_max");
        check_states(q_node_get_belief, scenario, "max_beliefs");
    }

    void propagate(q_equilibrium_t equilibrium) {
        ASSERT_EQ(q_domain_propagate(domain_.get(), equilibrium, q_mode_normal), q_error_none) << scenario_;
    }

    void check_utilities(const json& scenario) {
        scale_ = 1;
        for (const auto& [name, utility] : scenario["utilities"].items())
            scale_ = std::max(scale_, std::abs(utility.get<double>()));
        check_numbers(q_domain_get_expected_utility(domain_.get()), scenario, "expected_utility");
        check_nodes([](q_node_t asked) { return q_node_get_expected_utility(asked, 0); }, scenario,
                    "utilities");
        if (q_junction_tree_get_next(q_domain_get_first_junction_tree(domain_.get())) == nullptr)
            check_states(q_node_get_expected_utility, scenario, "expected_utility_given_state");
        scale_ = 1;
    }

    // From uniform policies, to the result of one of the orders in which decisions can be visited.
    void check_updating(const json& scenario, const json& reference) {
        propagate(q_equilibrium_sum);
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
            found_.add(utility, reference["optimal_expected_utility"], scenario_ + ": optimum");
        for (const json& decision : reference["decisions"]) {
            q_table_t policy = q_node_get_table(node(decision));
            const double states = static_cast<double>(q_node_get_number_of_states(node(decision)));
            std::fill_n(q_table_get_data(policy), q_table_get_size(policy), 1 / states);
            ASSERT_EQ(q_node_touch_table(node(decision)), q_error_none);
        }
    }
    static bool is_near(double found, double expected) {
        return std::abs(found - expected) <= tolerance * std::max(1.0, std::abs(expected));
    }

    void check_numbers(double found, const json& scenario, const std::string& key) {
        found_.add(found, scenario[key], scenario_ + ": " + key, scale_);
    }

    template <class Read>
    void check_nodes(const Read& read, const json& scenario, const std::string& key) {
        if (!scenario.contains(key)) return;
        for (const auto& [name, expected] : scenario[key].items())
            found_.add(read(node(name)), expected, scenario_ + ": " + key + " of " + name,
                       std::max(scale_, std::abs(expected.template get<double>())));
    }

    template <class Read>
    void check_states(const Read& read, const json& scenario, const std::string& key) {
        EXPECT_GT(scenario[key].size(), 0u) << key;
        for (const auto& [name, states] : scenario[key].items()) {
            ASSERT_EQ(q_node_get_number_of_states(node(name)), states.size()) << name;
            for (std::size_t state = 0; state < states.size(); ++state)
                if (!states[state].is_null())
                    found_.add(read(node(name), state), states[state], scenario_ + ": " + key + " of " + name,
                               scale_);
        }
    }

    owned_domain domain_;
    std::string scenario_;
    double scale_ = 1;  // of the numbers being compared
    differences found_;
};

void check_network(const std::string& name, const std::string& kind = "") {
    const std::filesystem::path folder = std::filesystem::path(QUARN_NETWORKS_DIR) / kind;
    const std::filesystem::path model = folder / (name + ".net");
    if (!std::filesystem::exists(model)) GTEST_SKIP() << "the reference networks are not here";
    checked_network checked(model);
    checked.check(json::parse(std::ifstream(folder / "expected" / (name + ".json"))));
    std::cout << name << ": largest difference " << checked.largest_difference() << '\n';
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
