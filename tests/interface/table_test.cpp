// Tables: their shapes, their numbers through every change of the network, densities, sizes out of reach.
#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "domain_digest.h"
#include "network_building.h"
#include "scenarios.h"

namespace {

using list = std::vector<q_node_t>;
using numbers = std::vector<double>;

TEST(table, nodes_and_first_contents) {
    const owned_domain domain(q_domain_new());
    q_node_t a = new_chance(domain.get(), "a", 2);
    q_node_t b = new_chance(domain.get(), "b", 3);
    q_node_t f = q_domain_new_node(domain.get(), q_category_function, q_kind_other);
    q_node_t x = new_continuous(domain.get(), "x");
    q_node_t y = new_continuous(domain.get(), "y", {x, b, f, a});
    q_node_t c = new_chance(domain.get(), "c", 2, {f, b, a});
    q_node_t g = q_domain_new_node(domain.get(), q_category_function, q_kind_discrete);
    q_node_add_parent(g, x);
    q_node_add_parent(g, a);
    const struct {
        q_table_t table;
        list nodes;
        numbers data;
        std::size_t cg_size;
    } cases[] = {
        {q_node_get_table(c), {b, a, c}, numbers(12, 1.0), 0},
        {q_node_get_table(y), {b, a, y, x}, numbers(6, 1.0), 30},
        {q_node_get_table(x), {x}, {1}, 2},
        {q_node_get_table(g), {g}, {1}, 0},
        {q_node_new_experience_table(c), {b, a}, numbers(6, 0.0), 0},
        {q_node_new_fading_table(c), {b, a}, numbers(6, 1.0), 0},
        {q_node_new_experience_table(y), {b, a}, numbers(6, 0.0), 0},
        {q_node_new_experience_table(a), {}, {0}, 0},
    };
    for (const auto& tested : cases) {
        SCOPED_TRACE(&tested - cases);
        EXPECT_EQ(listed(q_table_get_nodes(tested.table)), tested.nodes);
        EXPECT_EQ(data_of(tested.table), tested.data);
        EXPECT_EQ(q_table_get_cg_size(tested.table), tested.cg_size);
    }
    EXPECT_EQ(q_node_get_cg_variance(y, 5), 1);
    EXPECT_EQ(q_node_get_cg_intercept(y, 5), 0);
    EXPECT_EQ(q_node_get_cg_coefficient(y, x, 5), 0);
    EXPECT_EQ(q_node_get_table(f), nullptr);
    EXPECT_EQ(q_error_code(), q_error_usage);
    EXPECT_EQ(q_node_touch_table(f), q_error_usage);

    const owned_domain problem(q_domain_new());
    q_node_t u = q_domain_new_node(problem.get(), q_category_utility, q_kind_other);
    EXPECT_EQ(data_of(q_node_get_table(u)), numbers{0});
    EXPECT_EQ(*q_table_get_nodes(q_node_get_table(u)), nullptr);
    q_node_t d = q_domain_new_node(problem.get(), q_category_decision, q_kind_discrete);
    q_node_set_number_of_states(d, 2);
    set_data(q_node_get_table(u), {3});
    q_node_add_parent(u, d);
    EXPECT_EQ(listed(q_table_get_nodes(q_node_get_table(u))), list{d});
    EXPECT_EQ(data_of(q_node_get_table(u)), (numbers{3, 3}));
    EXPECT_EQ(data_of(q_node_get_table(d)), (numbers{1, 1}));
    EXPECT_EQ(q_node_new_experience_table(d), nullptr);
    EXPECT_EQ(q_error_code(), q_error_usage);
    EXPECT_EQ(q_node_get_experience_table(d), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
}

TEST(table, layout_of_small_changes) {
    const owned_domain domain(q_domain_new());
    q_node_t a = new_chance(domain.get(), "a", 2);
    q_node_t b = new_chance(domain.get(), "b", 3, {a});
    q_table_t table = q_node_get_table(b);
    set_data(table, {1, 2, 3, 4, 5, 6});
    q_node_set_number_of_states(b, 4);
    EXPECT_EQ(data_of(table), (numbers{1, 2, 3, 1, 4, 5, 6, 4}));
    q_node_set_number_of_states(b, 2);
    EXPECT_EQ(data_of(table), (numbers{1, 2, 4, 5}));
    q_node_t c = new_chance(domain.get(), "c", 2);
    q_node_add_parent(b, c);
    EXPECT_EQ(data_of(table), (numbers{1, 2, 4, 5, 1, 2, 4, 5}));
    q_node_remove_parent_keep_state(b, a, 1);
    EXPECT_EQ(data_of(table), (numbers{4, 5, 4, 5}));
    EXPECT_EQ(q_node_get_table(b), table);
}

// --- A second model of tables: what an assignment of states stands for, by name and without any order.

using assignment = std::map<q_node_t, std::size_t>;
// The number itself (null), or a number of a density: its intercept and variance under the node, else a coefficient.
using entry = std::map<std::pair<q_node_t, char>, double>;

struct reference_table {
    q_table_t actual;
    q_node_t owner;
    list discrete;
    std::map<assignment, entry> entries;

    bool contains(q_node_t node) const { return std::ranges::find(discrete, node) != discrete.end(); }

    void
    rebuild(const std::function<void(const assignment&, const entry&, std::map<assignment, entry>&)>& place) {
        std::map<assignment, entry> result;
        for (const auto& [states, numbers_there] : entries) place(states, numbers_there, result);
        entries = std::move(result);
    }
    void add(q_node_t parent, std::size_t count) {
        discrete.insert(discrete.begin(), parent);
        rebuild([&](assignment states, const entry& old, auto& result) {
            for (std::size_t state = 0; state < count; ++state) {
                states[parent] = state;
                result[states] = old;
            }
        });
    }
    void remove(q_node_t parent, std::size_t kept) {
        if (!contains(parent)) return;
        std::erase(discrete, parent);
        rebuild([&](assignment states, const entry& old, auto& result) {
            if (states.at(parent) != kept) return;
            states.erase(parent);
            result[states] = old;
        });
    }
    // `source` says which old state each new one continues.
    void change_states(q_node_t changed, const std::vector<std::size_t>& source) {
        if (!contains(changed)) return;
        rebuild([&](assignment states, const entry& old, auto& result) {
            const std::size_t before = states.at(changed);
            for (std::size_t state = 0; state < source.size(); ++state)
                if (source[state] == before) {
                    states[changed] = state;
                    result[states] = old;
                }
        });
    }
    void replace(q_node_t old_node, q_node_t new_node) {
        std::ranges::replace(discrete, old_node, new_node);
        rebuild([&](assignment states, const entry& old, auto& result) {
            auto moved = states.extract(old_node);
            if (!moved.empty()) {
                moved.key() = new_node;
                states.insert(std::move(moved));
            }
            result[states] = old;
        });
    }
};

entry read_entry(const reference_table& table, std::size_t configuration) {
    entry result{{{nullptr, 'd'}, q_table_get_data(table.actual)[configuration]}};
    const bool density =
        table.actual == q_node_get_table(table.owner) && q_node_get_kind(table.owner) == q_kind_continuous;
    if (!density) return result;
    result[{table.owner, 'i'}] = q_node_get_cg_intercept(table.owner, configuration);
    result[{table.owner, 'v'}] = q_node_get_cg_variance(table.owner, configuration);
    for (q_node_t parent : listed(q_node_get_parents(table.owner)))
        if (q_node_get_kind(parent) == q_kind_continuous)
            result[{parent, 'c'}] = q_node_get_cg_coefficient(table.owner, parent, configuration);
    return result;
}

// Reads a table of the library, counting through its configurations as an odometer does.
reference_table read(q_table_t actual, q_node_t owner) {
    reference_table result{actual, owner, {}, {}};
    for (q_node_t node : listed(q_table_get_nodes(actual)))
        if (q_node_get_kind(node) == q_kind_discrete) result.discrete.push_back(node);
    assignment states;
    for (q_node_t node : result.discrete) states[node] = 0;
    for (std::size_t i = 0; i < q_table_get_size(actual); ++i) {
        result.entries[states] = read_entry(result, i);
        for (auto digit = result.discrete.rbegin(); digit != result.discrete.rend(); ++digit) {
            if (++states[*digit] < q_node_get_number_of_states(*digit)) break;
            states[*digit] = 0;
        }
    }
    return result;
}

class random_edits {
public:
    explicit random_edits(unsigned seed) : random_(seed), domain_(q_domain_new()) {
        for (int i = 0; i < 6; ++i) parents_.push_back(new_chance(domain_.get(), letter(), 1 + draw(3)));
        for (int i = 0; i < 3; ++i) continuous_.push_back(new_continuous(domain_.get(), letter()));
        q_node_t x = continuous_.back();
        q_node_t c = new_chance(domain_.get(), letter(), 1 + draw(3));
        continuous_.pop_back();
        children_ = {c, x};
        for (int i = 0; i < 3; ++i) {
            q_node_add_parent(c, parents_[draw(parents_.size())]);
            q_node_add_parent(x, parents_[draw(parents_.size())]);
        }
        q_node_add_parent(x, continuous_[0]);
        track(q_node_get_table(c), c);
        track(q_node_new_experience_table(c), c);
        track(q_node_new_fading_table(c), c);
        track(q_node_get_table(x), x);
        track(q_node_new_experience_table(x), x);
    }

    void edit() {
        q_node_t child = children_[draw(2)];
        q_node_t parent = parents_[draw(parents_.size())];
        switch (draw(6)) {
        case 0: add(child, parent); break;
        case 1: remove(child, parent); break;
        case 2: resize(draw(5) == 0 ? children_[0] : parent); break;
        case 3: reorder(draw(5) == 0 ? children_[0] : parent); break;
        case 4: switch_parents(child, parent, parents_[draw(parents_.size())]); break;
        case 5: change_continuous(continuous_[draw(continuous_.size())]); break;
        }
    }

    void compare() const {
        for (const reference_table& expected : tables_) {
            const reference_table actual = read(expected.actual, expected.owner);
            ASSERT_EQ(actual.discrete, expected.discrete);
            ASSERT_EQ(actual.entries, expected.entries);
        }
    }

private:
    std::size_t draw(std::size_t below) { return random_() % below; }
    const char* letter() {
        name_ = std::string(1, next_++);
        return name_.c_str();
    }

    void track(q_table_t table, q_node_t owner) {
        for (double& number : std::span(q_table_get_data(table), q_table_get_size(table)))
            number = double(random_());
        if (table == q_node_get_table(owner) && q_node_get_kind(owner) == q_kind_continuous)
            for (std::size_t i = 0; i < q_table_get_size(table); ++i) {
                q_node_set_cg_intercept(owner, i, double(random_()));
                q_node_set_cg_variance(owner, i, double(random_()));
                q_node_set_cg_coefficient(owner, continuous_[0], i, double(random_()));
            }
        tables_.push_back(read(table, owner));
    }

    bool is_linked(q_node_t child, q_node_t parent) const {
        return std::ranges::count(listed(q_node_get_parents(child)), parent) > 0;
    }
    void for_tables_of(q_node_t child, const std::function<void(reference_table&)>& visit) {
        for (reference_table& table : tables_)
            if (table.owner == child) visit(table);
    }

    void add(q_node_t child, q_node_t parent) {
        if (is_linked(child, parent) || listed(q_node_get_parents(child)).size() > 4) return;
        EXPECT_EQ(q_node_add_parent(child, parent), q_error_none);
        for_tables_of(child, [&](reference_table& t) { t.add(parent, q_node_get_number_of_states(parent)); });
    }
    void remove(q_node_t child, q_node_t parent) {
        if (!is_linked(child, parent)) return;
        const std::size_t kept = draw(q_node_get_number_of_states(parent));
        const q_status_t status = kept == 0 ? q_node_remove_parent(child, parent)
                                            : q_node_remove_parent_keep_state(child, parent, kept);
        EXPECT_EQ(status, q_error_none);
        for_tables_of(child, [&](reference_table& t) { t.remove(parent, kept); });
    }
    void resize(q_node_t node) {
        const std::size_t before = q_node_get_number_of_states(node);
        std::vector<std::size_t> source(1 + draw(4));
        for (std::size_t state = 0; state < source.size(); ++state)
            source[state] = state < before ? state : 0;
        EXPECT_EQ(q_node_set_number_of_states(node, source.size()), q_error_none);
        for (reference_table& table : tables_) table.change_states(node, source);
    }
    void reorder(q_node_t node) {
        std::vector<std::size_t> source(q_node_get_number_of_states(node));
        std::vector<std::string> labels;
        for (std::size_t state = 0; state < source.size(); ++state) {
            source[state] = state;
            labels.push_back("state " + std::to_string(state));
            q_node_set_state_label(node, state, labels.back().c_str());
        }
        std::ranges::shuffle(source, random_);
        std::vector<const char*> order;
        for (std::size_t state : source) order.push_back(labels[state].c_str());
        order.push_back(nullptr);
        EXPECT_EQ(q_node_reorder_states(node, order.data()), q_error_none);
        for (reference_table& table : tables_) table.change_states(node, source);
        for (std::size_t state = 0; state < source.size(); ++state) q_node_set_state_label(node, state, "");
    }
    void switch_parents(q_node_t child, q_node_t parent, q_node_t other) {
        if (!is_linked(child, parent) || is_linked(child, other)) return;
        const bool alike = q_node_get_number_of_states(parent) == q_node_get_number_of_states(other);
        EXPECT_EQ(q_node_switch_parent(child, parent, other), alike ? q_error_none : q_error_usage);
        if (alike) for_tables_of(child, [&](reference_table& t) { t.replace(parent, other); });
    }
    void change_continuous(q_node_t parent) {
        q_node_t child = children_[1];
        const bool linked = is_linked(child, parent);
        const q_status_t status =
            linked ? q_node_remove_parent(child, parent) : q_node_add_parent(child, parent);
        EXPECT_EQ(status, q_error_none);
        for (reference_table& table : tables_) {
            if (table.actual != q_node_get_table(child)) continue;
            for (auto& [states, there] : table.entries)
                if (linked)
                    there.erase({parent, 'c'});
                else
                    there[{parent, 'c'}] = 0;
        }
        if (linked) return;
        for (auto& table : tables_)  // numbers to be told apart from the zeros of the next one
            if (table.actual == q_node_get_table(child)) {
                for (std::size_t i = 0; i < q_table_get_size(table.actual); ++i)
                    EXPECT_EQ(q_node_get_cg_coefficient(child, parent, i), 0);
                for (std::size_t i = 0; i < q_table_get_size(table.actual); ++i)
                    q_node_set_cg_coefficient(child, parent, i, double(random_()));
                table.entries = read(table.actual, child).entries;
            }
    }

    std::mt19937 random_;
    owned_domain domain_;
    list parents_;
    list continuous_;
    list children_;
    std::vector<reference_table> tables_;
    std::string name_;
    char next_ = 'a';
};

TEST(table, numbers_follow_every_change_of_states_and_links) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        random_edits edits(seed);
        for (int step = 0; step < 40; ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
            edits.edit();
            edits.compare();
            if (HasFailure()) return;
        }
    }
}

TEST(table, sizes_out_of_reach) {
    const owned_domain domain(q_domain_new());
    q_node_t child = new_chance(domain.get(), "c", 2);
    q_node_t y = new_continuous(domain.get(), "y");
    list big;
    for (const char* name : {"p", "q"}) {
        big.push_back(new_chance(domain.get(), name, std::size_t(1) << 32));
        q_node_add_parent(child, big.back());
        q_node_add_parent(y, big.back());
    }
    q_table_t table = q_node_get_table(child);
    const auto expect_too_large = [&] {
        EXPECT_EQ(q_table_get_size(table), std::size_t(-1));
        EXPECT_EQ(q_error_code(), q_error_size_too_large);
        EXPECT_EQ(q_table_get_data(table), nullptr);
        EXPECT_EQ(q_error_code(), q_error_size_too_large);
    };
    expect_too_large();
    EXPECT_EQ(q_table_get_cg_size(q_node_get_table(y)), std::size_t(-1));
    EXPECT_EQ(q_error_code(), q_error_size_too_large);
    EXPECT_EQ(q_node_set_cg_intercept(y, 0, 1), q_error_size_too_large);
    q_node_t small = new_chance(domain.get(), "s", 3);
    EXPECT_EQ(q_node_add_parent(child, small), q_error_none);
    EXPECT_EQ(q_node_set_number_of_states(small, 5), q_error_none);
    EXPECT_EQ(q_node_set_number_of_states(small, 4), q_error_none);
    expect_too_large();
    EXPECT_EQ(q_node_remove_parent(child, big[0]), q_error_none);
    EXPECT_EQ(q_table_get_size(table), (std::size_t(1) << 32) * 8);
    EXPECT_EQ(q_node_set_number_of_states(big[1], 3), q_error_none);
    EXPECT_EQ(data_of(table), numbers(24, 1.0));
    EXPECT_EQ(q_table_get_cg_size(q_node_get_table(y)), (std::size_t(1) << 32) * 6);

    // The numbers are there by now: no change may make them too many.
    const std::string before = digest(domain.get());
    EXPECT_EQ(q_node_set_number_of_states(small, std::size_t(1) << 61), q_error_no_memory);
    EXPECT_EQ(q_node_set_number_of_states(child, std::size_t(1) << 62), q_error_no_memory);
    EXPECT_EQ(q_node_set_number_of_states(big[0], std::size_t(1) << 62), q_error_none);
    EXPECT_EQ(q_node_add_parent(child, big[0]), q_error_no_memory);
    q_node_set_number_of_states(big[0], std::size_t(1) << 32);
    EXPECT_EQ(digest(domain.get()), before);
}

TEST(table, refused_densities_and_moments) {
    enum { a, c, x, y, z };
    const network_builder build = [] {
        owned_domain domain(q_domain_new());
        q_node_t discrete = new_chance(domain.get(), "a", 2);
        new_chance(domain.get(), "c", 2);
        q_node_t parent = new_continuous(domain.get(), "x", {discrete});
        new_continuous(domain.get(), "y", {discrete, parent});
        new_continuous(domain.get(), "z");
        return domain;
    };
    std::vector<refusal> calls;
    const auto refuse = [&](const char* name, operation call) {
        calls.push_back({name, q_error_usage, call});
    };
    const auto at = node_at;
    refuse("discrete", [&](q_domain_t d) { return q_node_set_cg_intercept(at(d, c), 0, 1); });
    refuse("configuration", [&](q_domain_t d) { return q_node_set_cg_intercept(at(d, y), 2, 1); });
    refuse("variance beyond", [&](q_domain_t d) { return q_node_set_cg_variance(at(d, z), 1, 1); });
    refuse("negative variance", [&](q_domain_t d) { return q_node_set_cg_variance(at(d, y), 0, -1e-300); });
    refuse("no parent", [&](q_domain_t d) { return q_node_set_cg_coefficient(at(d, y), at(d, z), 0, 1); });
    refuse("discrete parent",
           [&](q_domain_t d) { return q_node_set_cg_coefficient(at(d, y), at(d, a), 0, 1); });
    refuse("own parent", [&](q_domain_t d) { return q_node_set_cg_coefficient(at(d, y), at(d, y), 0, 1); });
    refuse("coefficient beyond",
           [&](q_domain_t d) { return q_node_set_cg_coefficient(at(d, y), at(d, x), 2, 1); });
    refuse("intercept of discrete",
           [&](q_domain_t d) { return outcome(q_node_get_cg_intercept(at(d, a), 0), -1.0); });
    refuse("variance of discrete",
           [&](q_domain_t d) { return outcome(q_node_get_cg_variance(at(d, a), 0), -1.0); });
    refuse("coefficient of no parent",
           [&](q_domain_t d) { return outcome(q_node_get_cg_coefficient(at(d, y), at(d, z), 0), -1.0); });
    const auto table = [](q_domain_t d, std::size_t node) { return q_node_get_table(node_at(d, node)); };
    refuse("moment beyond",
           [&](q_domain_t d) { return outcome(q_table_get_mean(table(d, x), 2, at(d, x)), -1.0); });
    refuse("moment of discrete",
           [&](q_domain_t d) { return outcome(q_table_get_mean(table(d, x), 0, at(d, a)), -1.0); });
    refuse("moment of a stranger",
           [&](q_domain_t d) { return outcome(q_table_get_variance(table(d, x), 0, at(d, z)), -1.0); });
    refuse("covariance with a stranger", [&](q_domain_t d) {
        return outcome(q_table_get_covariance(table(d, x), 0, at(d, x), at(d, z)), -1.0);
    });
    refuse("conditional",
           [&](q_domain_t d) { return outcome(q_table_get_mean(table(d, y), 0, at(d, y)), -1.0); });
    refuse("condition",
           [&](q_domain_t d) { return outcome(q_table_get_variance(table(d, y), 0, at(d, x)), -1.0); });
    refuse("fading of continuous", [&](q_domain_t d) { return outcome(q_node_new_fading_table(at(d, x))); });
    expect_refusals(build, calls);

    const owned_domain domain = build();
    q_node_t node = at(domain.get(), x);
    q_node_set_cg_intercept(node, 1, 2.5);
    EXPECT_EQ(q_node_set_cg_variance(node, 1, 0), q_error_none);
    EXPECT_EQ(q_table_get_mean(q_node_get_table(node), 1, node), 2.5);
    EXPECT_EQ(q_table_get_variance(q_node_get_table(node), 1, node), 0);
    EXPECT_EQ(q_table_get_covariance(q_node_get_table(node), 0, node, node), 1);
}

}  // namespace
