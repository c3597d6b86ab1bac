// Tables: their shapes, their numbers through every change of the network, densities, sizes out of reach.
#include <functional>
#include <map>
#include <random>

#include "scenarios.h"

using namespace scenarios;

namespace {

TEST(table, nodes_and_first_contents) {
    const owned_domain domain = network("cd cd fo cc cc cd fd", "34 14 24 04 25 15 05 36 06");
    const nodes n = nodes_of(domain.get());
    q_node_set_number_of_states(n[0], 2);
    q_node_set_number_of_states(n[1], 3);
    q_node_set_number_of_states(n[5], 2);
    const owned_domain problem = network("uo dd");
    q_node_t u = node_at(problem.get(), 0), choice = node_at(problem.get(), 1);
    q_node_set_number_of_states(choice, 2);
    set_data(q_node_get_table(u), {3});
    q_node_add_parent(u, choice);
    const struct {
        q_table_t table;
        nodes over;
        numbers data;
        std::size_t cg_size;
    } cases[] = {
        {q_node_get_table(n[5]), {n[1], n[0], n[5]}, numbers(12, 1.0), 0},
        {q_node_get_table(n[4]), {n[1], n[0], n[4], n[3]}, numbers(6, 1.0), 30},
        {q_node_get_table(n[6]), {n[6]}, {1}, 0},
        {q_node_new_experience_table(n[5]), {n[1], n[0]}, numbers(6, 0.0), 0},
        {q_node_new_fading_table(n[5]), {n[1], n[0]}, numbers(6, 1.0), 0},
        {q_node_new_experience_table(n[0]), {}, {0}, 0},
        {q_node_get_table(u), {choice}, {3, 3}, 0},
        {q_node_get_table(choice), {choice}, {1, 1}, 0},
    };
    for (const auto& tested : cases) {
        SCOPED_TRACE(&tested - cases);
        EXPECT_EQ(listed(q_table_get_nodes(tested.table)), tested.over);
        EXPECT_EQ(data_of(tested.table), tested.data);
        EXPECT_EQ(q_table_get_cg_size(tested.table), tested.cg_size);
    }
    EXPECT_EQ(q_node_get_cg_variance(n[4], 5), 1);
    EXPECT_EQ(q_node_get_cg_intercept(n[4], 5), 0);
    EXPECT_EQ(q_node_get_cg_coefficient(n[4], n[3], 5), 0);
    EXPECT_EQ(q_node_get_experience_table(choice), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
    expect_refusals([] { return network("dd fo"); }, q_error_usage, call(q_node_new_experience_table, 0),
                    call(q_node_get_table, 1), call(q_node_touch_table, 1));
}

// What an assignment of states stands for, in any order of the nodes: the number in the table, and what the density of
// its owner has there (-1 where there is none): intercept, variance, coefficients of two continuous nodes.
using assignment = std::map<q_node_t, std::size_t>;
using contents = std::map<assignment, numbers>;

// Counts through the configurations of a table as an odometer does.
contents read(q_table_t table, q_node_t owner, const nodes& n) {
    contents result;
    assignment states;
    nodes discrete = listed(q_table_get_nodes(table));
    std::erase_if(discrete, [](q_node_t node) { return q_node_get_kind(node) != q_kind_discrete; });
    for (q_node_t node : discrete) states[node] = 0;
    for (std::size_t i = 0; i < q_table_get_size(table); ++i) {
        result[states] = {q_table_get_data(table)[i], q_node_get_cg_intercept(owner, i),
                          q_node_get_cg_variance(owner, i), q_node_get_cg_coefficient(owner, n[6], i),
                          q_node_get_cg_coefficient(owner, n[7], i)};
        for (std::size_t digit = discrete.size(); digit-- > 0; states[discrete[digit]] = 0)
            if (++states[discrete[digit]] < q_node_get_number_of_states(discrete[digit])) break;
    }
    std::size_t size = 1;
    for (q_node_t node : discrete) size *= q_node_get_number_of_states(node);
    EXPECT_TRUE(result.size() == size && q_table_get_size(table) == size);
    return result;
}

// Random edits, each of which says which old assignment every new one continues.
void edit_and_compare(unsigned seed) {
    std::mt19937 random(seed);
    const auto draw = [&](std::size_t below) { return random() % below; };
    const owned_domain domain = network("cd cd cd cd cd cd cc cc cc cd", "68");
    const nodes n = nodes_of(domain.get());  // 6 discrete and 2 continuous parents, a child of each kind
    for (std::size_t i : {0u, 1u, 2u, 3u, 4u, 5u, 9u}) q_node_set_number_of_states(n[i], 1 + draw(3));
    std::vector<std::pair<q_table_t, q_node_t>> tables{{q_node_new_fading_table(n[9]), n[9]}};
    for (q_node_t child : {n[8], n[9]})
        for (q_table_t table : {q_node_get_table(child), q_node_new_experience_table(child)})
            tables.emplace_back(table, child);
    for (int step = 0; step < 40; ++step) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
        for (const auto& [table, owner] : tables)
            for (std::size_t i = 0; i < q_table_get_size(table); ++i) {
                q_table_get_data(table)[i] = double(random());
                q_node_set_cg_intercept(owner, i, double(random()));
                q_node_set_cg_variance(owner, i, double(random()));
                for (std::size_t x : {6u, 7u}) q_node_set_cg_coefficient(owner, n[x], i, double(random()));
            }
        std::vector<contents> before;
        for (const auto& [table, owner] : tables) before.push_back(read(table, owner, n));

        const std::size_t kind = draw(6), x = 6 + draw(2);
        q_node_t child = kind == 5 ? n[8] : n[8 + draw(2)], parent = kind == 5 ? n[x] : n[draw(6)],
                 other = n[draw(6)];
        if ((kind == 2 || kind == 3) && draw(5) == 0) parent = n[9];  // any node
        const nodes parents = listed(q_node_get_parents(child));
        const auto is_parent = [&](q_node_t node) { return std::ranges::count(parents, node) > 0; };
        const bool linked = is_parent(parent);
        const std::size_t count = kind == 5 ? 1 : q_node_get_number_of_states(parent), drawn = draw(3);
        q_status_t status = q_error_none;
        std::vector<std::size_t> order;
        std::function<void(assignment&)> to_old = [](assignment&) {};
        if (kind == 0 && !linked && parents.size() < 4) {
            status = q_node_add_parent(child, parent);
            to_old = [&](assignment& s) { s.erase(parent); };
        } else if (kind == 1 && linked) {
            status = drawn % count == 0 ? q_node_remove_parent(child, parent)
                                        : q_node_remove_parent_keep_state(child, parent, drawn % count);
            to_old = [&](assignment& s) { s[parent] = drawn % count; };
        } else if (kind == 2) {
            status = q_node_set_number_of_states(parent, 1 + drawn);
            to_old = [&](assignment& s) {
                if (s.contains(parent) && s[parent] >= count) s[parent] = 0;
            };
        } else if (kind == 3) {
            static const char* const labels[] = {"s", "t", "u"};
            for (std::size_t state = 0; state < count; ++state)
                order.push_back(state), q_node_set_state_label(parent, state, labels[state]);
            std::ranges::shuffle(order, random);
            std::vector<const char*> names;
            for (std::size_t state : order) names.push_back(labels[state]);
            names.push_back(nullptr);
            status = q_node_reorder_states(parent, names.data());
            to_old = [&](assignment& s) {
                if (s.contains(parent)) s[parent] = order[s[parent]];
            };
        } else if (kind == 4 && linked && !is_parent(other) &&
                   q_node_switch_parent(child, parent, other) == q_error_none) {
            to_old = [&](assignment& s) { s[parent] = s.extract(other).mapped(); };
        } else if (kind == 5) {
            status = linked ? q_node_remove_parent(child, parent) : q_node_add_parent(child, parent);
        }
        ASSERT_EQ(status, q_error_none) << kind;
        for (std::size_t t = 0; t < tables.size(); ++t)
            for (const auto& [states, entry] : read(tables[t].first, tables[t].second, n)) {
                assignment old = states;
                if (tables[t].second == child || kind == 2 || kind == 3) to_old(old);
                ASSERT_TRUE(before[t].contains(old)) << kind;
                numbers expected = before[t][old];
                if (kind == 5 && tables[t].second == child) expected[x - 3] = linked ? -1 : 0;
                ASSERT_EQ(entry, expected) << kind;
            }
    }
}

TEST(table, numbers_follow_every_change_of_states_and_links) {
    for (unsigned seed = 1; seed <= 40 && !HasFailure(); ++seed) edit_and_compare(seed);
}

TEST(table, sizes_out_of_reach) {
    const owned_domain domain = network("cd cd cd cd cc", "20 30 24 34");
    const nodes n = nodes_of(domain.get());
    const std::size_t half = std::size_t(1) << 32;
    q_table_t table = q_node_get_table(n[0]), densities = q_node_get_table(n[4]);
    for (q_node_t big : {n[2], n[3]}) q_node_set_number_of_states(big, half);
    const auto expect_too_large = [&] {
        for (q_status_t status :
             {outcome(q_table_get_size(table)), outcome(q_table_get_data(table)),
              outcome(q_table_get_cg_size(densities)), q_node_set_cg_intercept(n[4], 0, 1)})
            EXPECT_EQ(status, q_error_size_too_large);
    };
    expect_too_large();
    EXPECT_EQ(q_node_add_parent(n[0], n[1]), q_error_none);
    for (std::size_t count : {3u, 5u, 4u}) EXPECT_EQ(q_node_set_number_of_states(n[1], count), q_error_none);
    expect_too_large();
    EXPECT_EQ(q_node_remove_parent(n[0], n[2]), q_error_none);
    EXPECT_EQ(q_table_get_size(table), half * 4);
    EXPECT_EQ(q_node_set_number_of_states(n[3], 3), q_error_none);
    EXPECT_EQ(data_of(table), numbers(12, 1.0));
    EXPECT_EQ(q_table_get_cg_size(densities), half * 6);

    // The numbers are there by now: no change may make them too many.
    const std::string before = digest(domain.get());
    EXPECT_EQ(q_node_set_number_of_states(n[1], half << 29), q_error_no_memory);
    EXPECT_EQ(q_node_set_number_of_states(n[0], half << 30), q_error_no_memory);
    EXPECT_EQ(digest(domain.get()), before);
    const auto large = [] {
        owned_domain made = network("cd cd cd cd", "01 23");
        q_node_set_number_of_states(node_at(made.get(), 2), std::size_t(1) << 60);
        EXPECT_EQ(data_of(q_node_get_table(node_at(made.get(), 1))), numbers{1});
        return made;
    };
    expect_refusals(large, q_error_no_memory, call(q_node_add_parent, 1, 2));
    // Every size fits, but not the bytes.
    q_node_set_number_of_states(n[2], (half << 29) - 1);
    EXPECT_EQ(outcome(q_table_get_data(q_node_get_table(n[2]))), q_error_no_memory);
}

TEST(table, densities_and_moments) {
    enum : std::size_t { a, c, x, y, z };
    const network_builder build = [] {
        owned_domain domain = network("cd cd cc cc cc", "02 03 23");
        q_node_set_number_of_states(node_at(domain.get(), a), 2);
        return domain;
    };
    const auto coefficient = q_node_set_cg_coefficient;
    expect_refusals(
        build, q_error_usage, call(q_node_set_cg_intercept, c, 0, 1), call(q_node_set_cg_intercept, y, 2, 1),
        call(q_node_set_cg_variance, z, 1, 1), call(q_node_set_cg_variance, y, 0, -1e-300),
        call(coefficient, y, z, 0, 1), call(coefficient, y, a, 0, 1), call(coefficient, y, y, 0, 1),
        call(coefficient, y, x, 2, 1), call(q_node_get_cg_intercept, a, 0),
        call(q_node_get_cg_variance, a, 0), call(q_node_get_cg_coefficient, y, z, 0),
        call(q_table_get_mean, x, 2, x), call(q_table_get_mean, x, 0, a), call(q_table_get_variance, x, 0, z),
        call(q_table_get_covariance, x, 0, x, z), call(q_table_get_mean, y, 0, y),
        call(q_table_get_variance, y, 0, x), call(q_node_new_fading_table, x));
    const auto table = q_node_get_table;
    const owned_domain domain = build();
    const nodes n = nodes_of(domain.get());
    q_node_set_cg_intercept(n[x], 1, 2.5);
    EXPECT_EQ(q_node_set_cg_variance(n[x], 1, 0), q_error_none);
    EXPECT_EQ(q_table_get_mean(table(n[x]), 1, n[x]), 2.5);
    EXPECT_EQ(q_table_get_variance(table(n[x]), 1, n[x]), 0);
    EXPECT_EQ(q_table_get_covariance(table(n[x]), 0, n[x], n[x]), 1);
    // A failed look at a density makes no table, whose order would show.
    EXPECT_EQ(outcome(q_node_get_cg_intercept(n[z], 1)), q_error_usage);
    for (q_node_t parent : {n[a], n[c]}) q_node_add_parent(n[z], parent);
    EXPECT_EQ(listed(q_table_get_nodes(table(n[z]))), (nodes{n[a], n[c], n[z]}));
}

}  // namespace
