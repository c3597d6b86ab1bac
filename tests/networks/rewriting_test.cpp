// Real networks, written and read again; skipped where they are not at hand.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"

namespace {

namespace fs = std::filesystem;

owned_domain read(const fs::path& file) {
    return owned_domain(q_net_parse_domain(file.c_str(), nullptr, nullptr));
}

std::vector<std::string> names(const q_node_t* list) {
    std::vector<std::string> found;
    for (; *list != nullptr; ++list) found.emplace_back(q_node_get_name(*list));
    return found;
}

// All numbers of the table of a node.
std::vector<double> numbers(q_node_t node) {
    std::vector<double> found = data_of(q_node_get_table(node));
    for (std::size_t c = q_node_get_kind(node) == q_kind_continuous ? found.size() : 0; c-- > 0;) {
        found.push_back(q_node_get_cg_intercept(node, c));
        found.push_back(q_node_get_cg_variance(node, c));
        for (q_node_t parent : listed(q_node_get_parents(node)))
            if (q_node_get_kind(parent) == q_kind_continuous)
                found.push_back(q_node_get_cg_coefficient(node, parent, c));
    }
    return found;
}

void expect_equal(q_node_t one, q_node_t other) {
    EXPECT_STREQ(q_node_get_name(one), q_node_get_name(other));
    EXPECT_STREQ(q_node_get_label(one), q_node_get_label(other));
    EXPECT_EQ(names(q_node_get_parents(one)), names(q_node_get_parents(other)));
    if (q_node_get_category(one) == q_category_function) return;
    EXPECT_EQ(names(q_table_get_nodes(q_node_get_table(one))),
              names(q_table_get_nodes(q_node_get_table(other))));
    const std::vector<double> before = numbers(one), after = numbers(other);
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        ASSERT_NEAR(after[i], before[i], 5.001e-8 * std::abs(before[i])) << q_node_get_name(one) << ' ' << i;
}

TEST(Rewriting, ChangesNothing) {
    if (!fs::exists(fs::path(QUARN_NETWORKS_DIR) / "asia.net"))
        GTEST_SKIP() << "the reference networks are not here";
    const fs::path written = fs::path(testing::TempDir()) / "quarn_rewritten.net";
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(QUARN_NETWORKS_DIR)) {
        if (entry.path().extension() != ".net") continue;
        SCOPED_TRACE(entry.path().filename());
        const owned_domain domain = read(entry);
        ASSERT_EQ(q_domain_save_as_net(domain.get(), written.c_str()), q_error_none);
        const owned_domain again = read(written);
        ASSERT_NE(again, nullptr);
        q_node_t one = q_domain_get_first_node(domain.get()), other = q_domain_get_first_node(again.get());
        for (; one != nullptr && other != nullptr; one = q_node_get_next(one), other = q_node_get_next(other))
            expect_equal(one, other);
        EXPECT_EQ(one, other);
    }
    fs::remove(written);
}

}  // namespace
