// quarn.hpp: what its domains own, what its exceptions say, and that what fails leaves nothing behind.
#include <new>

#include <gmock/gmock.h>
#include <quarn.hpp>

#include "scenarios.h"
#include "texts.h"

using namespace scenarios;

namespace {

// The code of what an action throws.
template <class Action>
q_error_t code_of(Action action) {
    try {
        action();
        return q_error_none;
    } catch (const quarn::error& failed) {
        return failed.code();
    } catch (const std::bad_alloc&) {
        return q_error_no_memory;
    }
}

quarn::domain rain_and_grass() {
    quarn::domain domain;
    const quarn::node rain = domain.new_chance("rain", {"no", "yes"});
    const quarn::node grass = domain.new_chance("grass", {"dry", "wet"}, {rain});
    rain.set_table({0.8, 0.2});
    grass.set_table({0.9, 0.1, 0.05, 0.95});
    domain.compile();
    return domain;
}

int deleted = 0;
quarn::domain counted() {
    quarn::domain domain;
    quarn::check(q_domain_set_user_data_cleanup(domain, [](q_domain_t) { ++deleted; }));
    return domain;
}

TEST(cpp_face, a_domain_is_deleted_once) {
    deleted = 0;
    {
        quarn::domain first = counted(), second = std::move(first);
        EXPECT_EQ(code_of([&] { first.nodes(); }), q_error_usage);
        first = counted();
        second = std::move(first);
        EXPECT_EQ(deleted, 1);
        q_domain_t released = second.release();
        EXPECT_EQ(deleted, 1);
        second = quarn::domain(released);
    }
    EXPECT_EQ(deleted, 2);
}

TEST(cpp_face, evidence_and_results) {
    quarn::domain domain = rain_and_grass();
    const quarn::node rain = domain.node("rain"), grass = domain.node("grass");
    grass.select("wet");
    domain.propagate();
    EXPECT_NEAR(rain.belief("yes"), 0.19 / 0.27, 1e-12);
    EXPECT_NEAR(domain.normalization_constant(), 0.27, 1e-12);
    rain.enter_likelihood({0.25, 1});
    grass.retract();
    domain.propagate();
    EXPECT_NEAR(rain.belief(0), 0.5, 1e-12);
    rain.table()[0] = 0.6;
    rain.touch_table();
    domain.retract();
    domain.propagate();
    EXPECT_THAT(rain.beliefs(),
                testing::ElementsAre(testing::DoubleNear(0.75, 1e-12), testing::DoubleNear(0.25, 1e-12)));
}

TEST(cpp_face, nodes_in_creation_order_of_which_some_are_deleted_meanwhile) {
    const quarn::domain domain = rain_and_grass();
    const quarn::node rain = domain.nodes().front(), grass = domain.nodes().back();
    EXPECT_EQ(rain, domain.node("rain"));
    EXPECT_EQ(rain.children(), std::vector{grass});
    EXPECT_EQ(grass.states(), (std::vector<std::string>{"dry", "wet"}));
    EXPECT_EQ(domain.junction_trees().size(), 1u);
    for (const quarn::node parent : grass.parents()) grass.remove_parent(parent);
    EXPECT_TRUE(grass.parents().empty());
    for (const quarn::node node : domain.nodes()) quarn::check(q_node_delete(node));
    EXPECT_TRUE(domain.nodes().empty());
    EXPECT_FALSE(domain.find("rain").has_value());
}

TEST(cpp_face, an_exception_has_the_code_and_nothing_has_changed) {
    const struct {
        q_error_t code;
        std::function<void(quarn::domain&, quarn::node)> call;
    } rows[] = {
        {q_error_usage, [](quarn::domain& domain, quarn::node) { domain.node("sun"); }},
        {q_error_usage, [](quarn::domain&, quarn::node rain) { rain.belief("maybe"); }},
        {q_error_usage, [](quarn::domain&, quarn::node rain) { rain.select(2); }},
        {q_error_usage, [](quarn::domain&, quarn::node rain) { rain.mean(); }},
        {q_error_usage, [](quarn::domain&, quarn::node rain) { rain.set_table({1}); }},
        {q_error_usage, [](quarn::domain&, quarn::node rain) { rain.enter_likelihood({1}); }},
        {q_error_usage,
         [](quarn::domain&, quarn::node rain) {
             rain.enter_likelihood({0.5, -1});
         }},
        {q_error_no_equilibrium, [](quarn::domain&, quarn::node rain) { rain.beliefs(); }},
        {q_error_cyclic_network,
         [](quarn::domain& domain, quarn::node rain) { rain.add_parent(domain.node("grass")); }},
        {q_error_twice, [](quarn::domain& domain, quarn::node) { domain.new_chance("rain", {"a"}); }},
        {q_error_usage, [](quarn::domain& domain, quarn::node) { domain.new_chance("sun", {}); }},
        {q_error_usage,
         [](quarn::domain& domain, quarn::node rain) {
             domain.new_chance("sun", {"a"}, {rain, rain});
         }},
        {q_error_io, [](quarn::domain&, quarn::node) { quarn::domain::load("net {"); }},
        {q_error_io, [](quarn::domain& domain, quarn::node) { domain.load_case("/none/such"); }},
        {q_error_parse, [](quarn::domain&, quarn::node) { quarn::domain::parse("node a {}"); }},
        {q_error_parse, [](quarn::domain&, quarn::node) { quarn::domain::parse("/dev/null"); }},
        {q_error_usage, [](quarn::domain&, quarn::node) { quarn::take_string(q_domain_to_net(nullptr)); }},
    };
    quarn::domain domain = rain_and_grass();
    const std::string before = digest(domain);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(code_of([&] { rows[i].call(domain, domain.node("rain")); }), rows[i].code) << i;
        EXPECT_EQ(digest(domain), before) << i;
    }
}

TEST(cpp_face, a_parse_error_has_all_messages_with_their_places) {
    const quarn::domain domain = rain_and_grass();
    const std::string text =
        "net {}\nnode a {}\npotential (a) {}\nnode b { states = 1; }";  // line 3: a warning
    const temporary_file file(text);
    const std::pair<std::size_t, std::size_t> in_text(4, 20), in_file(4, 0), in_expression(2, 6);
    const struct {
        std::function<void()> read;
        std::string source;
        std::pair<std::size_t, std::size_t> place;
    } rows[] = {{[&] { quarn::domain::load(file.path); }, file.path, in_file},
                {[&] { quarn::domain::parse(text); }, "NET text", in_text},
                {[&] { domain.parse_expression("1 +\n  2 )"); }, "expression", in_expression}};
    for (const auto& row : rows) try {
            row.read();
            ADD_FAILURE() << row.source << " was read";
        } catch (const quarn::parse_error& failed) {
            EXPECT_EQ(failed.messages().size(), row.source == "expression" ? 1u : 2u);
            const quarn::message& last = failed.messages().back();
            EXPECT_EQ(std::pair(last.line, last.column), row.place) << last.text;
            EXPECT_EQ(failed.what(), row.source + ", line " + std::to_string(last.line) + ": " + last.text);
        }
}

TEST(cpp_face, warnings_of_a_text_that_is_read) {
    std::vector<quarn::message> warnings;
    quarn::domain::parse("net {}\nnode a { states = (\"x\" \"y\"); }\npotential (a) { }", &warnings);
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_EQ(warnings[0].line, 3u);
}

TEST(cpp_face, lack_of_memory_leaves_everything_as_it_was) {
    const auto in = [](auto action) {
        return tested_call([action](q_domain_t handle, const nodes&) {
            quarn::domain domain(handle);
            const q_status_t code = code_of([&] { action(domain); });
            return domain.release(), code;
        });
    };
    expect_survivals([] { return owned_domain(rain_and_grass().release()); }, in([](quarn::domain& domain) {
                         domain.new_chance("a", {"x", "y"});
                     }),
                     in([](quarn::domain& domain) { quarn::domain::parse(domain.to_net()); }),
                     in([](quarn::domain& domain) { domain.parse_expression(R"(rain == "yes")"); }),
                     in([](quarn::domain& domain) {
                         domain.node("rain").enter_likelihood({0.5, 1});
                     }));
}

}  // namespace
