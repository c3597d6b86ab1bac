// Real networks against answers that were computed by other means; skipped where the networks are not at hand.
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

class differences {
public:
    void add(double found, double expected, const std::string& what) {
        const double difference = std::abs(found - expected);
        if (!(difference <= tolerance)) ADD_FAILURE() << what << ": " << found << " instead of " << expected;
        largest_ = std::max(largest_, difference);
    }
    double largest() const { return largest_; }

private:
    double largest_ = 0;
};

void enter_case(q_domain_t domain, const json& findings) {
    ASSERT_EQ(q_domain_retract_findings(domain), q_error_none);
    for (const auto& [name, finding] : findings.items()) {
        q_node_t node = q_domain_get_node_by_name(domain, name.c_str());
        ASSERT_NE(node, nullptr) << name;
        if (finding.is_number()) {
            ASSERT_EQ(q_node_select_state(node, finding.get<std::size_t>()), q_error_none) << name;
            continue;
        }
        for (std::size_t state = 0; state < finding.size(); ++state)
            ASSERT_EQ(q_node_enter_finding(node, state, finding[state].get<double>()), q_error_none) << name;
    }
}

void compare(q_domain_t domain, const json& scenario, differences& found) {
    const std::string name = scenario["name"];
    ASSERT_EQ(q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal), q_error_none) << name;
    found.add(q_domain_get_log_normalization_constant(domain), scenario["log_p"], name + ": log P");
    std::size_t nodes = 0;
    for (const auto& [node_name, beliefs] : scenario["beliefs"].items()) {
        q_node_t node = q_domain_get_node_by_name(domain, node_name.c_str());
        ASSERT_NE(node, nullptr) << node_name;
        ASSERT_EQ(q_node_get_number_of_states(node), beliefs.size()) << node_name;
        for (std::size_t state = 0; state < beliefs.size(); ++state)
            found.add(q_node_get_belief(node, state), beliefs[state], name + ": " + node_name);
        ++nodes;
    }
    EXPECT_GT(nodes, 0u);
}

void check_network(const std::string& name) {
    const std::filesystem::path folder = QUARN_NETWORKS_DIR;
    const std::filesystem::path model = folder / (name + ".net");
    if (!std::filesystem::exists(model)) GTEST_SKIP() << "the reference networks are not here";
    owned_domain domain(q_net_parse_domain(model.c_str(), nullptr, nullptr));
    ASSERT_NE(domain, nullptr) << q_error_description(static_cast<uint32_t>(q_error_code()));
    ASSERT_EQ(q_domain_compile(domain.get()), q_error_none);
    const json reference = json::parse(std::ifstream(folder / "expected" / (name + ".json")));
    differences found;
    for (const json& scenario : reference["scenarios"]) {
        enter_case(domain.get(), scenario["case"]);
        compare(domain.get(), scenario, found);
    }
    std::cout << name << ": largest difference " << found.largest() << '\n';
}

class Reference : public testing::TestWithParam<const char*> {};
TEST_P(Reference, AnswersHold) { check_network(GetParam()); }
INSTANTIATE_TEST_SUITE_P(Networks, Reference,
                         testing::Values("asia", "cancer", "earthquake", "survey", "sachs", "child",
                                         "insurance", "water", "mildew", "alarm", "barley", "hailfinder",
                                         "win95pts", "pigs"),
                         [](const auto& network) { return std::string(network.param); });

// Its tables take 1.5 GB.
TEST(ReferenceLarge, AnswersHoldForMunin1) { check_network("munin1"); }

}  // namespace
