// The states of nodes: their number, labels, values and order.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "domain_digest.h"
#include "network_building.h"
#include "scenarios.h"

namespace {

constexpr double largest = std::numeric_limits<double>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

enum { labelled, boolean, numbered, interval, continuous, function };

owned_domain all_sorts() {
    owned_domain domain(q_domain_new());
    for (const char* name : {"l", "b", "n", "i"}) new_chance(domain.get(), name, *name == 'b' ? 2 : 3);
    new_continuous(domain.get(), "c");
    q_domain_new_node(domain.get(), q_category_function, q_kind_other);
    const q_subtype_t subtypes[] = {q_subtype_label, q_subtype_boolean, q_subtype_number, q_subtype_interval};
    for (std::size_t i = 0; i < 4; ++i) q_node_set_subtype(node_at(domain.get(), i), subtypes[i]);
    for (std::size_t state = 0; state < 3; ++state)
        q_node_set_state_label(node_at(domain.get(), labelled), state,
                               std::string(1, char('a' + state)).c_str());
    return domain;
}

q_status_t reorder(q_node_t node, std::vector<const char*> labels) {
    labels.push_back(nullptr);
    return q_node_reorder_states(node, labels.data());
}

TEST(states, refusals) {
    std::vector<refusal> calls;
    const auto refuse = [&](const char* name, std::size_t node, q_status_t (*call)(q_node_t)) {
        calls.push_back({name, q_error_usage, [=](q_domain_t d) { return call(node_at(d, node)); }});
    };
    refuse("no states", labelled, [](q_node_t n) { return q_node_set_number_of_states(n, 0); });
    refuse("count of boolean", boolean, [](q_node_t n) { return q_node_set_number_of_states(n, 3); });
    refuse("count of continuous", continuous, [](q_node_t n) { return q_node_set_number_of_states(n, 2); });
    refuse("count of function", function,
           [](q_node_t n) { return outcome(q_node_get_number_of_states(n), std::size_t(-1)); });
    refuse("boolean of three", labelled, [](q_node_t n) { return q_node_set_subtype(n, q_subtype_boolean); });
    refuse("subtype below", labelled, [](q_node_t n) { return q_node_set_subtype(n, 29); });
    refuse("subtype above", labelled, [](q_node_t n) { return q_node_set_subtype(n, 34); });
    refuse("subtype of continuous", continuous,
           [](q_node_t n) { return q_node_set_subtype(n, q_subtype_label); });
    refuse("subtype read", function, [](q_node_t n) { return outcome(q_node_get_subtype(n), -1); });
    refuse("label beyond", labelled, [](q_node_t n) { return q_node_set_state_label(n, 3, "x"); });
    refuse("label of continuous", continuous, [](q_node_t n) { return q_node_set_state_label(n, 0, "x"); });
    refuse("label read beyond", boolean, [](q_node_t n) { return outcome(q_node_get_state_label(n, 2)); });
    refuse("label read of function", function,
           [](q_node_t n) { return outcome(q_node_get_state_label(n, 0)); });
    refuse("value of label", labelled, [](q_node_t n) { return q_node_set_state_value(n, 0, 1); });
    refuse("value of boolean", boolean, [](q_node_t n) { return q_node_set_state_value(n, 0, 1); });
    refuse("value beyond numbers", numbered, [](q_node_t n) { return q_node_set_state_value(n, 3, 1); });
    refuse("bound beyond", interval, [](q_node_t n) { return q_node_set_state_value(n, 4, 1); });
    refuse("value never set", numbered,
           [](q_node_t n) { return outcome(q_node_get_state_value(n, 0), -1.0); });
    refuse("value read of label", labelled,
           [](q_node_t n) { return outcome(q_node_get_state_value(n, 0), -1.0); });
    refuse("state of a label of continuous", continuous,
           [](q_node_t n) { return outcome(q_node_get_state_index_from_label(n, "a"), int64_t(-1)); });
    refuse("state of a value never set", interval,
           [](q_node_t n) { return outcome(q_node_get_state_index_from_value(n, 0), int64_t(-1)); });
    refuse("state of a value of label", labelled,
           [](q_node_t n) { return outcome(q_node_get_state_index_from_value(n, 0), int64_t(-1)); });
    refuse("order of numbers", numbered, [](q_node_t n) { return reorder(n, {"", "", ""}); });
    refuse("order of boolean", boolean, [](q_node_t n) { return reorder(n, {"false", "true"}); });
    refuse("order of continuous", continuous, [](q_node_t n) { return reorder(n, {}); });
    refuse("order with a stranger", labelled, [](q_node_t n) { return reorder(n, {"a", "b", "d"}); });
    refuse("order with a repetition", labelled, [](q_node_t n) { return reorder(n, {"b", "b", "a"}); });
    refuse("order too short", labelled, [](q_node_t n) { return reorder(n, {"a", "b"}); });
    refuse("order too long", labelled, [](q_node_t n) { return reorder(n, {"a", "b", "c", "a"}); });
    refuse("order of nothing", labelled, [](q_node_t n) { return reorder(n, {}); });
    expect_refusals(all_sorts, calls);
}

TEST(states, setting_what_is_there_is_no_change) {
    const owned_domain domain = all_sorts();
    const auto node = [&](std::size_t i) { return node_at(domain.get(), i); };
    const std::string before = digest(domain.get());
    EXPECT_EQ(q_node_set_number_of_states(node(boolean), 2), q_error_none);
    EXPECT_EQ(q_node_set_subtype(node(interval), q_subtype_interval), q_error_none);
    EXPECT_EQ(q_node_set_state_label(node(labelled), 1, "b"), q_error_none);
    EXPECT_EQ(reorder(node(labelled), {"a", "b", "c"}), q_error_none);
    EXPECT_EQ(digest(domain.get()), before);
    q_node_t unlabelled = new_chance(domain.get(), "u", 2);
    EXPECT_EQ(reorder(unlabelled, {"", ""}), q_error_none);
    q_node_set_state_label(unlabelled, 0, "same");
    q_node_set_state_label(unlabelled, 1, "same");
    EXPECT_EQ(reorder(unlabelled, {"same", "same"}), q_error_none);
    q_node_set_number_of_states(unlabelled, 3);
    EXPECT_EQ(reorder(unlabelled, {"", "same", "same"}), q_error_usage);
}

TEST(states, labels_are_read_by_subtype_and_found_when_single) {
    const owned_domain domain(q_domain_new());
    q_node_t node = new_chance(domain.get(), "a", 2);
    const auto state = [&](const char* label) {
        const int64_t found = q_node_get_state_index_from_label(node, label);
        EXPECT_EQ(q_error_code(), q_error_none);
        return found;
    };
    EXPECT_STREQ(q_node_get_state_label(node, 1), "");
    EXPECT_EQ(state(""), -1);
    EXPECT_EQ(state("true"), -1);
    EXPECT_EQ(q_node_set_subtype(node, q_subtype_boolean), q_error_none);
    EXPECT_STREQ(q_node_get_state_label(node, 0), "false");
    EXPECT_EQ(state("true"), 1);
    q_node_set_state_label(node, 1, "false");
    EXPECT_EQ(state("false"), -1);  // both states by now
    q_node_set_state_label(node, 0, "no");
    EXPECT_EQ(state("false"), 1);
    q_node_set_state_label(node, 0, "");
    EXPECT_STREQ(q_node_get_state_label(node, 0), "");
    EXPECT_EQ(state(""), -1);
    q_node_set_subtype(node, q_subtype_label);
    q_node_set_number_of_states(node, 4);
    EXPECT_STREQ(q_node_get_state_label(node, 3), "");
    q_node_set_state_label(node, 3, "last");
    EXPECT_EQ(state("last"), 3);
    q_node_set_number_of_states(node, 3);
    q_node_set_number_of_states(node, 4);
    EXPECT_EQ(state("last"), -1);
}

TEST(states, values_follow_the_number_of_states) {
    const owned_domain domain(q_domain_new());
    q_node_t node = new_chance(domain.get(), "a", 2);
    q_node_set_subtype(node, q_subtype_interval);
    const auto values = [&] {
        std::vector<double> result;
        for (std::size_t i = 0; i <= q_node_get_number_of_states(node); ++i)
            result.push_back(q_node_get_state_value(node, i));
        return result;
    };
    using numbers = std::vector<double>;
    q_node_set_state_value(node, 1, 5);
    EXPECT_EQ(values(), (numbers{-largest, 5, largest}));
    q_node_set_state_value(node, 2, 7);
    q_node_set_number_of_states(node, 4);
    EXPECT_EQ(values(), (numbers{-largest, 5, -1, -1, 7}));
    q_node_set_state_value(node, 2, 6);
    q_node_set_number_of_states(node, 3);
    EXPECT_EQ(values(), (numbers{-largest, 5, 6, 7}));
    q_node_set_number_of_states(node, 1);
    EXPECT_EQ(values(), (numbers{-largest, 7}));
    q_node_t count = new_chance(domain.get(), "b", 2);
    q_node_set_subtype(count, q_subtype_number);
    q_node_set_state_value(count, 1, 2);
    EXPECT_EQ(q_node_get_state_value(count, 0), -1);
    EXPECT_EQ(q_error_code(), q_error_none);
}

TEST(states, a_number_selects_a_state) {
    const int64_t refused = -3;
    const struct {
        q_subtype_t subtype;
        std::vector<double> values;
        std::vector<std::pair<double, int64_t>> expected;
    } cases[] = {
        {q_subtype_number,
         {0, 1, 2},
         {{1.0000005, 1}, {0.9999995, 1}, {1.01, -1}, {0, 0}, {1e-300, -1}, {-1, -1}}},
        {q_subtype_number, {-2, 1e6, 1e6 + 0.5}, {{-2, 0}, {1e6 + 0.5, 1}, {NAN, -1}}},
        {q_subtype_number, {0, 0, 1}, {{0, refused}}},
        {q_subtype_number, {2, 1}, {{1, refused}}},
        {q_subtype_number, {0, NAN}, {{0, refused}}},
        {q_subtype_number, {-largest, 0}, {{0, refused}}},
        {q_subtype_number, {0, largest}, {{0, refused}}},
        {q_subtype_interval, {0, 1, 2}, {{-0.1, -1}, {0, 0}, {0.5, 0}, {1, 1}, {2, 1}, {2.1, -1}, {NAN, -1}}},
        {q_subtype_interval,
         {-largest, 0, largest},
         {{-1e300, 0}, {-infinity, 0}, {-largest, 0}, {0, 1}, {largest, 1}, {infinity, 1}}},
        {q_subtype_interval, {0, 1, 1, 2}, {{1, 2}, {0.9, 0}}},
        {q_subtype_interval, {0, 1, 1}, {{1, 1}, {0.5, 0}, {1.5, -1}}},
        {q_subtype_interval, {1, 1, 1, 2}, {{1, refused}}},
        {q_subtype_interval, {0, 2, 1}, {{1, refused}}},
        {q_subtype_interval, {-largest, -largest, 1}, {{0, refused}}},
        {q_subtype_interval, {0, largest, largest}, {{0, refused}}},
        {q_subtype_interval, {0, NAN, 2}, {{0, refused}}},
        {q_subtype_interval, {-largest, largest}, {{0, 0}, {-infinity, 0}}},
    };
    for (const auto& tested : cases) {
        SCOPED_TRACE(&tested - cases);
        const owned_domain domain(q_domain_new());
        const bool bounds = tested.subtype == q_subtype_interval;
        q_node_t node = new_chance(domain.get(), "a", tested.values.size() - (bounds ? 1 : 0));
        q_node_set_subtype(node, tested.subtype);
        for (std::size_t i = 0; i < tested.values.size(); ++i)
            q_node_set_state_value(node, i, tested.values[i]);
        for (const auto& [number, state] : tested.expected) {
            EXPECT_EQ(q_node_get_state_index_from_value(node, number), state == refused ? -1 : state)
                << number;
            EXPECT_EQ(q_error_code(), state == refused ? q_error_usage : q_error_none) << number;
        }
    }
}

TEST(states, evidence_follows_number_and_order) {
    const auto weights = [](q_node_t node) {
        std::vector<double> result;
        for (std::size_t state = 0; state < q_node_get_number_of_states(node); ++state)
            result.push_back(q_node_get_entered_finding(node, state));
        return result;
    };
    using numbers = std::vector<double>;
    const owned_domain domain = all_sorts();
    q_node_t node = node_at(domain.get(), labelled);
    q_node_select_state(node, 1);
    q_node_set_number_of_states(node, 4);
    EXPECT_EQ(q_node_get_selected_state(node), 1);
    EXPECT_EQ(weights(node), (numbers{0, 1, 0, 0}));
    q_node_set_state_label(node, 3, "d");
    EXPECT_EQ(reorder(node, {"d", "b", "c", "a"}), q_error_none);
    EXPECT_EQ(q_node_get_selected_state(node), 1);
    EXPECT_EQ(reorder(node, {"b", "c", "a", "d"}), q_error_none);
    EXPECT_EQ(q_node_get_selected_state(node), 0);
    EXPECT_STREQ(q_node_get_state_label(node, 2), "a");

    for (std::size_t state = 0; state < 4; ++state) q_node_enter_finding(node, state, 0.25 * double(state));
    EXPECT_EQ(reorder(node, {"a", "d", "c", "b"}), q_error_none);
    EXPECT_EQ(q_node_get_selected_state(node), -2);
    EXPECT_EQ(weights(node), (numbers{0.5, 0.75, 0.25, 0}));
    q_node_set_number_of_states(node, 3);
    EXPECT_EQ(q_node_get_selected_state(node), -1);
    EXPECT_EQ(weights(node), (numbers{1, 1, 1}));
    q_node_select_state(node, 2);
    q_node_set_number_of_states(node, 2);
    EXPECT_EQ(q_node_get_selected_state(node), -1);
    q_node_enter_finding(node, 0, 0.5);
    EXPECT_EQ(weights(node), (numbers{0.5, 1}));
}

}  // namespace
