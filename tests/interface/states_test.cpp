// The states of nodes: their number, labels, values and order.
#include <cmath>
#include <limits>

#include "scenarios.h"

using namespace scenarios;

namespace {

constexpr double largest = std::numeric_limits<double>::max(),
                 infinity = std::numeric_limits<double>::infinity();

enum : std::size_t { labelled, boolean, numbered, interval, continuous, function };

owned_domain all_sorts() {
    owned_domain domain = network("cd cd cd cd cc fo");
    const nodes n = nodes_of(domain.get());
    for (std::size_t i = 0; i < 4; ++i) {
        q_node_set_number_of_states(n[i], i == boolean ? 2 : 3);
        q_node_set_subtype(n[i], q_subtype_label + int(i));
    }
    for (std::size_t state = 0; state < 3; ++state)
        q_node_set_state_label(n[labelled], state, std::string(1, char('a' + state)).c_str());
    return domain;
}

// Labels of one letter each, "_" for none.
q_status_t reorder(q_node_t node, const char* letters) {
    std::vector<std::string> labels;
    for (; *letters != '\0'; ++letters) labels.push_back(*letters == '_' ? "" : std::string(1, *letters));
    std::vector<const char*> order;
    for (const std::string& label : labels) order.push_back(label.c_str());
    order.push_back(nullptr);
    return q_node_reorder_states(node, order.data());
}

TEST(states, refusals) {
    const auto count = q_node_set_number_of_states;
    const auto value = q_node_set_state_value;
    const auto from_value = q_node_get_state_index_from_value;
    expect_refusals(
        all_sorts, q_error_usage, call(count, labelled, 0), call(count, boolean, 3),
        call(count, continuous, 2), call(q_node_get_number_of_states, function),
        call(q_node_set_subtype, labelled, q_subtype_boolean), call(q_node_set_subtype, labelled, 29),
        call(q_node_set_subtype, labelled, 34), call(q_node_set_subtype, continuous, q_subtype_label),
        call(q_node_set_state_label, labelled, 3, "x"), call(q_node_set_state_label, continuous, 0, "x"),
        call(q_node_get_state_label, boolean, 2), call(q_node_get_state_label, function, 0),
        call(value, labelled, 0, 1), call(value, boolean, 0, 1), call(value, numbered, 3, 1),
        call(value, interval, 4, 1), call(q_node_get_state_value, numbered, 0),
        call(q_node_get_state_value, labelled, 0), call(q_node_get_state_index_from_label, continuous, "a"),
        call(from_value, interval, 0), call(from_value, labelled, 0), call(reorder, numbered, "___"),
        call(reorder, boolean, "ft"), call(reorder, continuous, ""), call(reorder, labelled, "abd"),
        call(reorder, labelled, "bba"), call(reorder, labelled, "ab"), call(reorder, labelled, "abca"),
        call(reorder, labelled, ""));
}

TEST(states, labels_are_read_by_subtype_and_found_when_single) {
    const owned_domain domain = network("cd");
    q_node_t node = node_at(domain.get(), 0);
    q_node_set_number_of_states(node, 2);
    const auto expect = [&](const char* label, int64_t state, const char* first) {
        EXPECT_EQ(q_node_get_state_index_from_label(node, label), state) << label;
        EXPECT_EQ(q_error_code(), q_error_none);
        EXPECT_STREQ(q_node_get_state_label(node, 0), first);
    };
    expect("", -1, "");
    expect("true", -1, "");
    q_node_set_subtype(node, q_subtype_boolean);
    expect("true", 1, "false");
    q_node_set_state_label(node, 1, "false");
    expect("false", -1, "false");  // both states by now
    q_node_set_state_label(node, 0, "");
    expect("false", 1, "");
    q_node_set_subtype(node, q_subtype_label);
    for (std::size_t count : {1u, 2u}) q_node_set_number_of_states(node, count);
    expect("false", -1, "");
}

TEST(states, values_follow_the_number_of_states) {
    const owned_domain domain = all_sorts();
    q_node_t node = node_at(domain.get(), interval);
    const auto values = [&](std::size_t count) {
        q_node_set_number_of_states(node, count);
        numbers result;
        for (std::size_t i = 0; i <= count; ++i) result.push_back(q_node_get_state_value(node, i));
        return result;
    };
    q_node_set_state_value(node, 1, 5);
    EXPECT_EQ(values(2), (numbers{-largest, 5, largest}));
    q_node_set_state_value(node, 2, 7);
    EXPECT_EQ(values(4), (numbers{-largest, 5, -1, -1, 7}));
    q_node_set_state_value(node, 2, 6);
    EXPECT_EQ(values(3), (numbers{-largest, 5, 6, 7}));
    EXPECT_EQ(values(1), (numbers{-largest, 7}));
    q_node_set_state_value(node_at(domain.get(), numbered), 1, 2);
    EXPECT_EQ(q_node_get_state_value(node_at(domain.get(), numbered), 0), -1);
    EXPECT_EQ(q_error_code(), q_error_none);
}

TEST(states, a_number_selects_a_state) {
    const int64_t refused = -3;
    const q_subtype_t number = q_subtype_number, bounds = q_subtype_interval;
    const struct {
        q_subtype_t subtype;
        numbers values;
        std::vector<std::pair<double, int64_t>> expected;
    } cases[] = {
        {number, {0, 1, 2}, {{1.0000005, 1}, {0.9999995, 1}, {1.01, -1}, {0, 0}, {1e-300, -1}, {-1, -1}}},
        {number, {-2, 1e6, 1e6 + 0.5}, {{-2, 0}, {1e6 + 0.5, 1}, {NAN, -1}}},
        {number, {0, 0, 1}, {{0, refused}}},
        {number, {-largest, 0}, {{0, refused}}},
        {number, {0, largest}, {{0, refused}}},
        {bounds, {0, 1, 2}, {{-0.1, -1}, {0, 0}, {0.5, 0}, {1, 1}, {2, 1}, {2.1, -1}, {NAN, -1}}},
        {bounds,
         {-largest, 0, largest},
         {{-infinity, 0}, {-largest, 0}, {0, 1}, {largest, 1}, {infinity, 1}}},
        {bounds, {0, 1, 1, 2}, {{1, 2}, {0.9, 0}}},
        {bounds, {0, 1, 1}, {{1, 1}, {0.5, 0}, {1.5, -1}}},
        {bounds, {1, 1, 1, 2}, {{1, refused}}},
        {bounds, {0, 2, 1}, {{1, refused}}},
        {bounds, {0, largest, largest}, {{0, refused}}},
        {bounds, {-largest, largest}, {{0, 0}, {-infinity, 0}}}};
    for (const auto& [subtype, values, expected] : cases) {
        const owned_domain domain = network("cd");
        q_node_t node = node_at(domain.get(), 0);
        q_node_set_number_of_states(node, values.size() - (subtype == bounds ? 1 : 0));
        q_node_set_subtype(node, subtype);
        for (std::size_t i = 0; i < values.size(); ++i) q_node_set_state_value(node, i, values[i]);
        for (const auto& [asked, state] : expected) {
            EXPECT_EQ(q_node_get_state_index_from_value(node, asked), state == refused ? -1 : state) << asked;
            EXPECT_EQ(q_error_code(), state == refused ? q_error_usage : q_error_none) << asked;
        }
    }
}

TEST(states, evidence_follows_number_and_order) {
    const owned_domain domain = all_sorts();
    q_node_t node = node_at(domain.get(), labelled);
    const auto expect = [&](int64_t selected, const numbers& weights) {
        EXPECT_EQ(q_node_get_selected_state(node), selected);
        for (std::size_t state = 0; state < weights.size(); ++state)
            EXPECT_EQ(q_node_get_entered_finding(node, state), weights[state]);
    };
    q_node_select_state(node, 1);
    q_node_set_number_of_states(node, 4);
    expect(1, {0, 1, 0, 0});
    EXPECT_EQ(reorder(node, "abc_"), q_error_none);
    q_node_set_state_label(node, 3, "c");
    EXPECT_EQ(reorder(node, "abcc"), q_error_none);  // as it is
    EXPECT_EQ(reorder(node, "bacc"), q_error_usage);
    q_node_set_state_label(node, 3, "d");
    EXPECT_EQ(reorder(node, "bcad"), q_error_none);
    expect(0, {1, 0, 0, 0});
    EXPECT_STREQ(q_node_get_state_label(node, 2), "a");
    for (std::size_t state = 0; state < 4; ++state) q_node_enter_finding(node, state, 0.25 * double(state));
    EXPECT_EQ(reorder(node, "adcb"), q_error_none);
    expect(-2, {0.5, 0.75, 0.25, 0});
    q_node_set_number_of_states(node, 3);
    expect(-1, {1, 1, 1});
    q_node_select_state(node, 2);
    q_node_set_number_of_states(node, 2);
    expect(-1, {1, 1});
}

}  // namespace
