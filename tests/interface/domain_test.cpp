// Domains: what may join them, names and their lookup, attributes, log files, deletion.
#include <map>
#include <random>

#include "scenarios.h"
#include "texts.h"

using namespace scenarios;

namespace {

// The kinds that nodes of the categories from 4 on get when other (-1), discrete (0), continuous (1), 2 are asked for.
TEST(domain, category_and_kind_of_a_new_node) {
    const int no = -2, given[][4] = {{no, no, no, no}, {-1, 0, no, no},  {no, no, no, no}, {no, 0, 1, no},
                                     {no, 0, no, no},  {-1, -1, -1, -1}, {no, no, no, no}};
    for (int category = 4; category <= 10; ++category)
        for (int asked = -1; asked <= 2; ++asked) {
            if (category == q_category_decision && asked == 1) continue;  // refused for another reason
            const owned_domain domain = network("");
            q_node_t node = q_domain_new_node(domain.get(), category, asked);
            EXPECT_EQ(outcome(node), given[category - 4][asked + 1] == no ? q_error_usage : q_error_none);
            EXPECT_EQ(q_node_get_kind(node), given[category - 4][asked + 1]) << category << ' ' << asked;
            const bool discrete = q_node_get_kind(node) == q_kind_discrete;
            EXPECT_EQ(q_node_get_subtype(node), discrete ? q_subtype_label : -1);
            EXPECT_EQ(q_node_get_number_of_states(node), discrete ? 1 : std::size_t(-1));
        }
}

TEST(domain, names_are_identifiers_joined_by_dots) {
    const owned_domain domain = network("cd cd");
    q_node_t node = node_at(domain.get(), 0), other = node_at(domain.get(), 1);
    for (const char* name : {"a", "_x1", "A_b2", "a.b", "_.a1.Z9"})
        EXPECT_EQ(q_node_set_name(node, name), q_error_none) << name;
    for (const char* name : {"", "1a", "a-b", "a b", "a..b", "a.", ".a", ".", "a.1", "\xe9t\xe9", "a\n"})
        EXPECT_EQ(q_node_set_name(node, name), q_error_invalid_name) << name;
    EXPECT_STREQ(q_node_get_name(node), "_.a1.Z9");
    EXPECT_EQ(q_node_set_name(other, "_.a1.Z9"), q_error_twice);
    for (int twice : {1, 2}) EXPECT_EQ(q_node_set_name(other, "b"), q_error_none) << twice;
}

TEST(domain, automatic_names_follow_the_number_in_creation_order) {
    const owned_domain domain = network("cd dd uo fo cd cd cd");
    const nodes n = nodes_of(domain.get());
    for (std::size_t i : {0u, 1u, 2u, 3u})
        EXPECT_EQ(q_node_get_name(n[i]), "CDUF"[i] + std::to_string(i + 1));
    q_node_delete(n[1]);
    EXPECT_STREQ(q_node_get_name(n[4]), "C4");  // the fourth of six by now
    q_node_set_name(n[0], "C5");
    q_node_set_name(n[2], "C7");
    EXPECT_STREQ(q_node_get_name(n[5]), "C8");  // 5 and then 7 are taken
    q_node_delete(n[0]);
    EXPECT_STREQ(q_node_get_name(n[6]), "C5");
}

// New nodes, renames and deletions at random, in domains of few and of many nodes, against a plain list.
TEST(domain, lookup_finds_what_has_the_name_now) {
    std::mt19937 random(7);
    const owned_domain domain = network("");
    nodes all;
    std::map<std::string, q_node_t> named;
    for (std::size_t limit : {10u, 11u, 23u, 60u, 5u})
        for (int step = 0; step < 400; ++step) {
            const std::string name = "n" + std::to_string(random() % 80);
            if (all.size() < limit && random() % 2 == 0) {
                all.push_back(new_node(domain.get(), "cd"));
                named[q_node_get_name(all.back())] = all.back();
            } else if (!all.empty()) {
                const auto place = all.begin() + std::ptrdiff_t(random() % all.size());
                const auto old =
                    std::ranges::find(named, *place, [](const auto& item) { return item.second; });
                const bool free = !named.contains(name);
                if (all.size() > limit || random() % 4 == 0) {
                    EXPECT_EQ(q_node_delete(*place), q_error_none);
                    named.erase(old), all.erase(place);
                } else {
                    EXPECT_EQ(q_node_set_name(*place, name.c_str()),
                              free || old->first == name ? q_error_none : q_error_twice);
                    if (free) named.erase(old), named[name] = *place;
                }
            }
            const std::string asked = random() % 2 == 0 ? name : "C" + std::to_string(random() % 70);
            ASSERT_EQ(q_domain_get_node_by_name(domain.get(), asked.c_str()),
                      named.contains(asked) ? named[asked] : nullptr)
                << step;
            ASSERT_EQ(nodes_of(domain.get()), all);
        }
}

TEST(domain, attributes_keep_the_order_of_their_keys) {
    const owned_domain domain = network("cd");
    q_node_t node = node_at(domain.get(), 0);
    const auto after = [&](const std::vector<std::pair<const char*, const char*>>& changes) {
        for (const auto& [key, value] : changes) {
            EXPECT_EQ(q_domain_set_attribute(domain.get(), key, value), q_error_none) << key;
            EXPECT_EQ(q_node_set_attribute(node, key, value), q_error_none) << key;
        }
        std::string texts[2];
        q_attribute_t first[] = {q_domain_get_first_attribute(domain.get()),
                                 q_node_get_first_attribute(node)};
        for (int i : {0, 1})
            for (q_attribute_t at = first[i]; at != nullptr; at = q_attribute_get_next(at))
                texts[i] += std::string(q_attribute_get_key(at)) + "=" + q_attribute_get_value(at) + " ";
        EXPECT_EQ(q_error_code(), q_error_none);
        EXPECT_EQ(texts[0], texts[1]);
        return texts[0];
    };
    EXPECT_EQ(
        after({{"one", "1"}, {"two", "2"}, {"three", "3"}, {"four", "4"}, {"two", ""}, {"absent", nullptr}}),
        "one=1 two= three=3 four=4 ");
    EXPECT_EQ(after({{"three", nullptr}, {"one", nullptr}, {"three", "3"}}), "two= four=4 three=3 ");
    EXPECT_EQ(q_node_get_attribute(node, "one"), nullptr);
    EXPECT_EQ(q_error_code(), q_error_none);
    for (const char* key : {"", "1", "a.b", "a b", "node_size"})
        EXPECT_EQ(q_domain_set_attribute(domain.get(), key, nullptr), q_error_invalid_name) << key;
    for (const char* key : {"", "1", "label", "position", "states", "subtype", "state_values"})
        EXPECT_EQ(q_node_set_attribute(node, key, "1"), q_error_invalid_name) << key;
    EXPECT_EQ(q_domain_set_attribute(domain.get(), "label", "1"), q_error_none);
    EXPECT_EQ(q_node_set_attribute(node, "node_size", "1"), q_error_none);
}

TEST(domain, log_file_stays_when_another_cannot_be_opened) {
    const temporary_file file("before");
    owned_domain domain = network("cd");
    EXPECT_EQ(q_domain_set_log_file(domain.get(), file.path.c_str(), 1), q_error_none);
    EXPECT_EQ(q_domain_set_log_file(domain.get(), "/", 0), q_error_io);
    EXPECT_EQ(q_domain_compile(domain.get()), q_error_none);
    domain.reset();
    EXPECT_TRUE(file.contents().starts_with("before") && file.contents().size() > 6);
    EXPECT_EQ(q_domain_set_log_file(network("").get(), file.path.c_str(), 0), q_error_none);
    EXPECT_EQ(file.contents(), "");
}

std::string seen;  // by the callbacks, which get no argument of the test's own

// The callbacks also make a call that fails, which does not show in the result of the deletion.
TEST(domain, deletion_runs_the_callbacks_while_everything_can_be_read) {
    const auto of_node = [](q_node_t node) {
        seen +=
            static_cast<const char*>(q_node_get_user_data(node)) + std::string(q_node_get_name(node)) + "(";
        for (q_node_t child : listed(q_node_get_children(node))) seen += q_node_get_name(child);
        seen += std::to_string(data_of(q_node_get_table(node)).size()) + ") ";
        EXPECT_EQ(q_node_set_name(node, ""), q_error_invalid_name);
    };
    char texts[][8] = {"old ", "middle ", "new ", "last ", "domain "};
    q_domain_t domain = network("cd cd cd cd", "01 12 23").release();
    const nodes n = nodes_of(domain);
    for (std::size_t i = 0; i < 4; ++i) {
        q_node_set_name(n[i], std::string(1, char('a' + i)).c_str());
        q_node_set_user_data_cleanup(n[i], of_node);
        q_node_set_user_data(n[i], texts[i]);
    }
    q_node_set_user_data_cleanup(n[3], nullptr);
    q_domain_set_user_data(domain, texts[4]);
    q_domain_set_user_data_cleanup(domain, [](q_domain_t deleted) {
        seen += static_cast<const char*>(q_domain_get_user_data(deleted));
        seen += q_node_get_name(q_domain_get_first_node(deleted));
        EXPECT_EQ(q_domain_set_attribute(deleted, "", ""), q_error_invalid_name);
    });
    EXPECT_EQ(q_node_delete(n[1]), q_error_none);
    EXPECT_EQ(q_error_code(), q_error_none);
    EXPECT_EQ(q_domain_delete(domain), q_error_none);
    EXPECT_EQ(q_error_code(), q_error_none);
    EXPECT_EQ(seen, "middle b(c1) old a(1) new c(d1) domain d");
}

}  // namespace
