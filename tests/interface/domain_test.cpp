// Domains: what may join them, names and their lookup, attributes, log files, deletion.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"
#include "scenarios.h"

namespace {

owned_domain new_domain() { return owned_domain(q_domain_new()); }

TEST(domain, category_and_kind_of_a_new_node) {
    const struct {
        q_category_t category;
        q_kind_t asked;
        q_kind_t kind;  // -2: refused
        q_subtype_t subtype;
        std::size_t states;
    } cases[] = {
        {q_category_chance, q_kind_discrete, q_kind_discrete, q_subtype_label, 1},
        {q_category_chance, q_kind_continuous, q_kind_continuous, -1, std::size_t(-1)},
        {q_category_chance, q_kind_other, -2, 0, 0},
        {q_category_decision, q_kind_discrete, q_kind_discrete, q_subtype_label, 1},
        {q_category_decision, q_kind_other, -2, 0, 0},
        {q_category_utility, q_kind_discrete, q_kind_other, -1, std::size_t(-1)},
        {q_category_utility, 77, q_kind_other, -1, std::size_t(-1)},
        {q_category_function, q_kind_discrete, q_kind_discrete, q_subtype_label, 1},
        {q_category_function, q_kind_other, q_kind_other, -1, std::size_t(-1)},
        {q_category_function, q_kind_continuous, -2, 0, 0},
        {q_category_instance, q_kind_other, -2, 0, 0},
        {4, q_kind_discrete, -2, 0, 0},
        {10, q_kind_discrete, -2, 0, 0},
        {0, q_kind_other, -2, 0, 0},
    };
    for (const auto& tested : cases) {
        SCOPED_TRACE(std::to_string(tested.category) + "," + std::to_string(tested.asked));
        const owned_domain domain = new_domain();
        q_node_t node = q_domain_new_node(domain.get(), tested.category, tested.asked);
        EXPECT_EQ(q_error_code(), tested.kind == -2 ? q_error_usage : q_error_none);
        EXPECT_EQ(q_domain_get_first_node(domain.get()), node);
        ASSERT_EQ(node == nullptr, tested.kind == -2);
        if (node == nullptr) continue;
        EXPECT_EQ(q_node_get_category(node), tested.category);
        EXPECT_EQ(q_node_get_kind(node), tested.kind);
        EXPECT_EQ(q_node_get_subtype(node), tested.subtype);
        EXPECT_EQ(q_node_get_number_of_states(node), tested.states);
        EXPECT_EQ(q_error_code(), tested.subtype == -1 ? q_error_usage : q_error_none);
        EXPECT_EQ(q_node_get_domain(node), domain.get());
    }
}

TEST(domain, which_nodes_go_together) {
    const q_error_t cg = q_error_cg_limids_not_supported;
    const q_error_t cyclic = q_error_cyclic_functional_dependency;
    const struct {
        std::vector<const char*> nodes;
        links present;
        const char* added;
        q_error_t code;
    } cases[] = {
        {{"cd", "dd", "uo", "fo"}, {}, "cd", q_error_none},
        {{"cd", "dd"}, {}, "cc", cg},
        {{"uo"}, {}, "cc", cg},
        {{"cd", "cc"}, {}, "dd", cg},
        {{"cc"}, {}, "uo", cg},
        {{}, {}, "dc", cg},
        {{"dd"}, {}, "dc", cg},
        {{"cc"}, {}, "fo", q_error_none},
        {{"dd"}, {}, "fo", q_error_none},
        {{"cc"}, {}, "cd", q_error_none},
        // A function with a variable among its parents and one among its descendants.
        {{"cd", "fo", "cd"}, {{0, 1}, {1, 2}}, "dd", cyclic},
        {{"cd", "fo", "fo", "cd"}, {{0, 1}, {1, 2}, {2, 3}}, "uo", cyclic},
        {{"cd", "fo", "cd"}, {{0, 1}, {1, 2}}, "cd", q_error_none},
        {{"cd", "fd"}, {{0, 1}}, "uo", cyclic},  // the function itself takes states
        {{"cd", "fo", "fo"}, {{0, 1}, {1, 2}}, "dd", q_error_none},
        {{"fo", "cd"}, {{0, 1}}, "dd", q_error_none},  // a function of nothing
        {{"fd"}, {}, "dd", q_error_none},
        {{"dd", "cd", "fo"}, {{1, 2}}, "uo", q_error_none},  // not the first decision
    };
    for (const auto& tested : cases) {
        const std::size_t row = std::size_t(&tested - cases);
        const network_builder build = [&] {
            SCOPED_TRACE(row);
            return network(tested.nodes, tested.present);
        };
        const operation add = [&](q_domain_t domain) { return outcome(new_node(domain, tested.added)); };
        if (tested.code == q_error_none)
            EXPECT_EQ(add(build().get()), q_error_none) << row;
        else
            expect_refusals(build, {{tested.added, tested.code, add}});
        if (tested.code != cyclic) continue;
        // Turning a variable into the first decision is no way around.
        const owned_domain domain = build();
        EXPECT_EQ(q_node_set_category(node_at(domain.get(), 0), q_category_decision), cyclic) << row;
        EXPECT_EQ(q_node_get_category(node_at(domain.get(), 0)), q_category_chance) << row;
    }
}

TEST(domain, names_have_the_form_of_identifiers_joined_by_dots) {
    const owned_domain domain = new_domain();
    q_node_t node = new_chance(domain.get(), "first", 1);
    for (const char* name : {"a", "_x1", "A_b2", "a.b", "_.a1.Z9"}) {
        EXPECT_EQ(q_node_set_name(node, name), q_error_none) << name;
        EXPECT_STREQ(q_node_get_name(node), name);
    }
    for (const char* name : {"", "1a", "a-b", "a b", "a..b", "a.", ".a", ".", "a.1", "\xe9t\xe9", "a\n"}) {
        EXPECT_EQ(q_node_set_name(node, name), q_error_invalid_name) << name;
        EXPECT_STREQ(q_node_get_name(node), "_.a1.Z9");
    }
    q_node_t other = new_chance(domain.get(), "b", 1);
    EXPECT_EQ(q_node_set_name(other, "_.a1.Z9"), q_error_twice);
    EXPECT_STREQ(q_node_get_name(other), "b");
    EXPECT_EQ(q_node_set_name(other, "b"), q_error_none);
    EXPECT_EQ(q_domain_get_node_by_name(domain.get(), "a"), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
    const owned_domain second = new_domain();
    EXPECT_EQ(q_node_set_name(new_node(second.get(), "cd"), "b"), q_error_none);
}

TEST(domain, automatic_names_follow_the_number_in_creation_order) {
    const owned_domain domain = new_domain();
    std::vector<q_node_t> nodes;
    for (const char* node : {"cd", "dd", "uo", "fo", "cd", "cd", "cd"})
        nodes.push_back(new_node(domain.get(), node));
    EXPECT_STREQ(q_node_get_name(nodes[0]), "C1");
    EXPECT_STREQ(q_node_get_name(nodes[1]), "D2");
    EXPECT_STREQ(q_node_get_name(nodes[2]), "U3");
    EXPECT_STREQ(q_node_get_name(nodes[3]), "F4");
    q_node_delete(nodes[1]);
    EXPECT_STREQ(q_node_get_name(nodes[2]), "U3");
    EXPECT_STREQ(q_node_get_name(nodes[4]), "C4");  // the fourth of six by now
    q_node_set_name(nodes[0], "C5");
    q_node_set_name(nodes[2], "C7");
    EXPECT_STREQ(q_node_get_name(nodes[5]), "C8");  // 5 and then 7 are taken
    q_node_set_name(nodes[0], "free");
    EXPECT_STREQ(q_node_get_name(nodes[5]), "C8");
    q_node_delete(nodes[0]);
    EXPECT_STREQ(q_node_get_name(nodes[6]), "C5");
}

// Renames and deletions at random, in domains of few and of many nodes, against a plain list.
TEST(domain, lookup_finds_what_has_the_name_now) {
    std::mt19937 random(7);
    const owned_domain domain = new_domain();
    std::vector<std::pair<q_node_t, std::string>> expected;
    const auto find = [&](const std::string& name) -> q_node_t {
        for (const auto& [node, its_name] : expected)
            if (its_name == name) return node;
        return nullptr;
    };
    const std::size_t most[] = {10, 11, 23, 60, 5};
    for (std::size_t limit : most)
        for (int step = 0; step < 400; ++step) {
            const std::string name = "n" + std::to_string(random() % 80);
            const bool taken = find(name) != nullptr;
            if (expected.size() < limit && random() % 2 == 0) {
                q_node_t node = new_node(domain.get(), "cd");
                expected.emplace_back(node, q_node_get_name(node));
            } else if (expected.size() > limit || (random() % 4 == 0 && !expected.empty())) {
                const auto place = expected.begin() + std::ptrdiff_t(random() % expected.size());
                EXPECT_EQ(q_node_delete(place->first), q_error_none);
                expected.erase(place);
            } else if (!expected.empty()) {
                auto& [node, present] = expected[random() % expected.size()];
                const bool same = present == name;
                EXPECT_EQ(q_node_set_name(node, name.c_str()), taken && !same ? q_error_twice : q_error_none);
                if (!taken) present = name;
            }
            const std::string asked = random() % 2 == 0 ? name : "C" + std::to_string(random() % 70);
            ASSERT_EQ(q_domain_get_node_by_name(domain.get(), asked.c_str()), find(asked))
                << limit << ' ' << step;
        }
}

TEST(domain, nodes_are_listed_newest_first_through_deletions) {
    const owned_domain domain = new_domain();
    EXPECT_EQ(q_domain_get_first_node(domain.get()), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
    std::vector<q_node_t> nodes;
    for (int i = 0; i < 4; ++i) nodes.push_back(new_node(domain.get(), "cd"));
    for (std::size_t deleted : {std::size_t(1), std::size_t(2), std::size_t(0)}) {
        EXPECT_EQ(nodes_of(domain.get()), nodes);
        q_node_delete(nodes[deleted]);
        nodes.erase(nodes.begin() + std::ptrdiff_t(deleted));
    }
    EXPECT_EQ(nodes_of(domain.get()), nodes);
}

TEST(domain, attributes_keep_the_order_of_their_keys) {
    const owned_domain domain = new_domain();
    q_node_t node = new_node(domain.get(), "cd");
    EXPECT_EQ(q_domain_get_first_attribute(domain.get()), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
    const auto set = [&](const char* key, const char* value) {
        EXPECT_EQ(q_domain_set_attribute(domain.get(), key, value), q_error_none) << key;
        EXPECT_EQ(q_node_set_attribute(node, key, value), q_error_none) << key;
    };
    const auto text = [](q_attribute_t attribute) {
        std::string result;
        for (; attribute != nullptr; attribute = q_attribute_get_next(attribute))
            result +=
                std::string(q_attribute_get_key(attribute)) + "=" + q_attribute_get_value(attribute) + " ";
        EXPECT_EQ(q_error_code(), q_error_none);
        return result;
    };
    const auto expect = [&](const std::string& expected) {
        EXPECT_EQ(text(q_domain_get_first_attribute(domain.get())), expected);
        EXPECT_EQ(text(q_node_get_first_attribute(node)), expected);
    };
    for (const char* key : {"one", "two", "three", "four"}) set(key, key);
    q_attribute_t handle = q_domain_get_first_attribute(domain.get());
    set("two", "");
    set("absent", nullptr);
    expect("one=one two= three=three four=four ");
    set("three", nullptr);
    expect("one=one two= four=four ");
    set("four", nullptr);
    expect("one=one two= ");
    EXPECT_EQ(q_domain_get_first_attribute(domain.get()), handle);
    set("three", "3");
    expect("one=one two= three=3 ");
    set("one", nullptr);
    expect("two= three=3 ");
    EXPECT_STREQ(q_domain_get_attribute(domain.get(), "three"), "3");
    EXPECT_EQ(q_domain_get_attribute(domain.get(), "one"), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);

    set("inputs", "text");  // words of the NET language that name nothing else here
    for (const char* key : {"", "1", "a.b", "a b"})
        for (const char* value : {"value", static_cast<const char*>(nullptr)}) {
            EXPECT_EQ(q_domain_set_attribute(domain.get(), key, value), q_error_invalid_name) << key;
            EXPECT_EQ(q_node_set_attribute(node, key, value), q_error_invalid_name) << key;
        }
    EXPECT_EQ(q_domain_set_attribute(domain.get(), "node_size", "1"), q_error_invalid_name);
    EXPECT_EQ(q_domain_set_attribute(domain.get(), "label", "1"), q_error_none);
    EXPECT_EQ(q_node_set_attribute(node, "node_size", "1"), q_error_none);
    for (const char* key : {"label", "position", "states", "subtype", "state_values"})
        EXPECT_EQ(q_node_set_attribute(node, key, "1"), q_error_invalid_name) << key;
}

TEST(domain, pairs_of_numbers_need_two_places) {
    const owned_domain domain = new_domain();
    q_node_t node = new_node(domain.get(), "uo");
    int32_t first = 1;
    int32_t second = 1;
    EXPECT_EQ(q_domain_get_node_size(domain.get(), &first, &second), q_error_none);
    EXPECT_TRUE(first == 0 && second == 0);
    q_domain_set_node_size(domain.get(), -3, INT32_MAX);
    EXPECT_EQ(q_domain_get_node_size(domain.get(), &first, &second), q_error_none);
    EXPECT_TRUE(first == -3 && second == INT32_MAX);
    EXPECT_EQ(q_node_get_position(node, &first, &second), q_error_none);
    EXPECT_TRUE(first == 0 && second == 0);
    q_node_set_position(node, INT32_MIN, 5);
    EXPECT_EQ(q_node_get_position(node, &first, &second), q_error_none);
    EXPECT_TRUE(first == INT32_MIN && second == 5);
    EXPECT_EQ(q_domain_get_node_size(domain.get(), &first, &first), q_error_usage);
    EXPECT_EQ(q_node_get_position(node, &first, &first), q_error_usage);
    EXPECT_EQ(first, INT32_MIN);
}

std::string contents(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(domain, log_file_stays_when_another_cannot_be_opened) {
    const std::string path =
        testing::TempDir() + "quarn_domain_test_" + std::to_string(std::random_device()()) + ".log";
    std::ofstream(path) << "before\n";
    owned_domain domain = new_domain();
    new_node(domain.get(), "cd");
    EXPECT_EQ(q_domain_set_log_file(domain.get(), path.c_str(), 1), q_error_none);
    for (const char* bad : {"/no/such/folder/log", "/", ""}) {
        EXPECT_EQ(q_domain_set_log_file(domain.get(), bad, 0), q_error_io) << bad;
        EXPECT_EQ(q_error_code(), q_error_io);
    }
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    EXPECT_EQ(q_domain_delete(domain.release()), q_error_none);
    const std::string first = contents(path);
    EXPECT_TRUE(first.starts_with("before\n") && first.size() > 7) << first;

    domain = new_domain();
    EXPECT_EQ(q_domain_set_log_file(domain.get(), path.c_str(), 0), q_error_none);
    EXPECT_EQ(contents(path), "");
    std::remove(path.c_str());
}

// What callbacks see; they get no argument of the test's own.
std::string* seen = nullptr;

TEST(domain, deletion_runs_the_callbacks_while_everything_can_be_read) {
    std::string record;
    seen = &record;
    const auto of_node = [](q_node_t node) {
        *seen +=
            std::string(static_cast<const char*>(q_node_get_user_data(node))) + "(" + q_node_get_name(node);
        for (q_node_t child : listed(q_node_get_children(node)))
            *seen += std::string(" ") + q_node_get_name(child);
        *seen += " " + std::to_string(data_of(q_node_get_table(node)).size()) + ") ";
    };
    char texts[][8] = {"old", "middle", "new", "domain"};
    q_domain_t domain = q_domain_new();
    q_node_t parent = nullptr;
    for (const char* name : {"a", "b", "c", "d"}) {
        q_node_t node = new_chance(domain, name, 2);
        if (parent != nullptr) q_node_add_parent(node, parent);
        q_node_set_user_data_cleanup(node, of_node);
        q_node_set_user_data(node, *name == 'd' ? nullptr : texts[*name - 'a']);
        if (*name == 'd') q_node_set_user_data_cleanup(node, nullptr);
        parent = node;
    }
    q_domain_set_user_data(domain, texts[3]);
    EXPECT_EQ(q_domain_get_user_data(domain), texts[3]);
    q_domain_set_user_data_cleanup(domain, [](q_domain_t deleted) {
        *seen += static_cast<const char*>(q_domain_get_user_data(deleted));
        *seen += q_node_get_name(q_domain_get_first_node(deleted));
    });
    q_node_t middle = q_domain_get_node_by_name(domain, "b");
    q_node_set_label(middle, "label");
    EXPECT_EQ(q_node_delete(middle), q_error_none);
    EXPECT_EQ(record.substr(0, 8), "middle(b");
    record.clear();
    EXPECT_EQ(q_domain_delete(domain), q_error_none);
    EXPECT_EQ(record, "old(a 2) new(c d 2) domaind");
}

}  // namespace
