// Models of nodes: what they take, and how they follow changes of the network.
#include "fault_plan.h"
#include "node_models.h"
#include "scenarios.h"

using namespace scenarios;

namespace {

constexpr q_error_t none = q_error_none, usage = q_error_usage, invalid = q_error_invalid_expression;

// A: labels lo, mid, hi; B: boolean; N: 1.5, 4; I: intervals 0-2-6; X: continuous; G: a function; F: a function of all
// these; S: like A; H. The last two have no links.
enum : std::size_t { a, b, n, i, x, g, f, s, h };

const char* const expressions[] = {R"(if(A == "lo", #A, N))",
                                   "variance(N) + quantile(N, N / 10)",
                                   nullptr,
                                   "probability(N > I)",
                                   "if(B, X, G)",
                                   "max(I, #B, variance(X), quantile(X, N))"};

owned_domain function_of_all() {
    owned_domain domain = network("cd cd cd cd cc fo fo cd cd", "06 16 26 36 46 56");
    const nodes all = nodes_of(domain.get());
    for (std::size_t node = a; node <= h; ++node)
        q_node_set_name(all[node], std::string(1, "ABNIXGFSH"[node]).c_str());
    for (std::size_t node : {a, s}) {
        q_node_set_number_of_states(all[node], 3);
        for (std::size_t state = 0; const char* label : {"lo", "mid", "hi"})
            q_node_set_state_label(all[node], state++, label);
    }
    for (std::size_t node : {b, n, i}) {
        q_node_set_number_of_states(all[node], 2);
        q_node_set_subtype(all[node], q_subtype_label + int(node));
    }
    for (std::size_t state = 0; double value : {1.5, 4.0}) q_node_set_state_value(all[n], state++, value);
    for (std::size_t bound = 0; double value : {0.0, 2.0, 6.0})
        q_node_set_state_value(all[i], bound++, value);
    give_model(all[f], "AN", {std::begin(expressions), std::end(expressions)});
    q_model_set_samples_per_interval(q_node_get_model(all[f]), 25);
    return domain;
}
owned_domain without_model() {
    owned_domain domain = function_of_all();
    q_model_delete(q_node_get_model(node_at(domain.get(), f)));
    return domain;
}

q_status_t set_owned_expression(q_node_t node) {
    const q_model_t model = q_node_get_model(node);
    return q_model_set_expression(model, 2, q_model_get_expression(model, 0));
}
q_status_t set_samples(q_node_t node, std::size_t count) {
    return q_model_set_samples_per_interval(q_node_get_model(node), count);
}
q_expression_t expression_of(q_node_t node, std::size_t configuration) {
    return q_model_get_expression(q_node_get_model(node), configuration);
}
q_status_t reorder(q_node_t node, const char* first, const char* second, const char* third) {
    const char* const order[] = {first, second, third, nullptr};
    return q_node_reorder_states(node, order);
}
q_status_t spoil_values_and_remove(q_node_t child, q_node_t parent) {
    q_node_set_state_value(parent, 0, 9);
    return q_node_remove_parent(child, parent);
}

TEST(models, refusals) {
    expect_refusals(function_of_all, usage, call(new_model, f, ""), call(new_model, x, ""),
                    call(new_model, g, "A"), call(set_owned_expression, f), call(expression_of, f, 6),
                    call(set_samples, f, 0));
    expect_refusals(without_model, usage, call(new_model, f, "ANA"), call(new_model, f, "AS"),
                    call(new_model, f, "AX"), call(new_model, f, "G"));

    const owned_domain domain = function_of_all(), other = function_of_all();
    const nodes all = nodes_of(domain.get());
    for (const char* text : {"1", "A", static_cast<const char*>(nullptr)})
        EXPECT_EQ(set_expression(all[f], 6, text), usage);
    for (const char* text : {"A", "B", "Normal(0, 1)", "1 + #S", "F"})
        EXPECT_EQ(set_expression(all[f], 2, text), invalid) << text;
    // A node of another domain, where at some time its mark is that of the parents.
    q_expression_t foreign = q_expression_make_node(all[i]);
    for (int attempt = 0; attempt < 20; ++attempt)
        EXPECT_EQ(q_model_set_expression(q_node_get_model(node_at(other.get(), f)), 0, foreign), invalid);
    EXPECT_EQ(q_expression_delete(foreign), none);
    EXPECT_EQ(digest(domain.get()), digest(other.get()));

    // What selects a state.
    for (std::size_t node : {a, b, n, i}) {
        give_model(all[node], "", {"Normal(0, 1)"});
        const char* const values[] = {R"("lo")", "true", "4"};
        for (std::size_t type = 0; type < 3; ++type)
            EXPECT_EQ(set_expression(all[node], 0, values[type]),
                      type == node || (type == n && node == i) ? none : invalid);
    }
}

TEST(models, can_be_too_large) {
    constexpr std::size_t many = std::size_t(1) << 40;
    const auto count = q_node_set_number_of_states;
    const auto build = [](std::size_t states, const char* model_nodes) {
        owned_domain domain = network("cd cd fo", "02 12");
        const nodes all = nodes_of(domain.get());
        for (std::size_t node : {0u, 1u}) q_node_set_name(all[node], node == 0 ? "A" : "B");
        q_node_set_number_of_states(all[0], states);
        EXPECT_EQ(new_model(all[2], model_nodes), none);
        return domain;
    };
    expect_refusals([&] { return build(1, "AB"); }, q_error_no_memory, call(count, 1, many));
    expect_refusals([&] { return build(4, "AB"); }, q_error_size_too_large, call(count, 1, many << 22));
    const owned_domain domain = build(many, "");
    q_node_t function = node_at(domain.get(), 2);
    q_model_delete(q_node_get_model(function));
    EXPECT_EQ(new_model(function, "A"), q_error_no_memory);
    EXPECT_EQ(count(node_at(domain.get(), 1), many), none);
    EXPECT_EQ(new_model(function, "AB"), q_error_size_too_large);
}

TEST(models, follow_changes) {
    const auto count = q_node_set_number_of_states;
    const auto remove = q_node_remove_parent;
    const auto keep = q_node_remove_parent_keep_state;
    // The model of F after a change; $0 to $5 stand for the expressions from before.
    const std::pair<tested_call, const char*> cases[] = {
        {call(count, a, 1), "AN: $0 | $1"},
        {call(count, a, 4), "AN: $0 | $1 | - | $3 | $4 | $5 | - | -"},
        {call(count, n, 1), "AN: $0 | - | $4"},
        {call(count, n, 3), "AN: $0 | $1 | - | - | $3 | - | $4 | $5 | -"},
        {call(reorder, a, "hi", "lo", "mid"), "AN: $4 | $5 | $0 | $1 | - | $3"},
        {call(remove, f, a), R"(N: if("lo" == "lo", 0, N) | $1)"},
        {call(keep, f, a, 1), "N: - | $3"},
        {call(remove, f, n), "A: if(A == \"lo\", #A, 1.5) | - | $4"},
        {call(keep, f, n, 1), "A: 0 + 4 | probability(4 > I) | max(I, #B, variance(X), quantile(X, 4))"},
        {call(spoil_values_and_remove, f, n), "A: if(A == \"lo\", #A, 0) | - | $4"},
        {call(keep, f, b, 1),
         "AN: $0 | $1 | - | $3 | if(true, X, G) | max(I, 1, variance(X), quantile(X, N))"},
        {call(q_node_delete, b),
         "AN: $0 | $1 | - | $3 | if(false, X, G) | max(I, 0, variance(X), quantile(X, N))"},
        {call(keep, f, i, 1),
         "AN: $0 | $1 | - | probability(N > 4) | $4 | max(4, #B, variance(X), quantile(X, N))"},
        {call(q_node_delete, x), "AN: $0 | $1 | - | $3 | if(B, 0, G) | max(I, #B, 0, 0)"},
        {call(remove, f, g), "AN: $0 | $1 | - | $3 | if(B, X, 0) | $5"},
        {call(q_node_switch_parent, f, a, s), R"(SN: if(S == "lo", #S, N) | $1 | - | $3 | $4 | $5)"},
        {call(q_node_add_parent, f, h), "AN: $0 | $1 | - | $3 | $4 | $5"},
        {call(set_expression, f, 5, nullptr), "AN: $0 | $1 | - | $3 | $4 | -"},
    };
    for (const auto& [change, model_after] : cases) {
        const owned_domain domain = function_of_all();
        const nodes all = nodes_of(domain.get());
        const q_model_t model = q_node_get_model(all[f]);
        q_node_t clone = q_node_clone(all[f]);
        EXPECT_EQ(change(domain.get(), all), none);
        std::string expected;
        for (const char* at = model_after; *at != '\0'; ++at)
            expected += *at == '$' ? expressions[*++at - '0'] : std::string(1, *at);
        EXPECT_EQ(model_of(all[f]), expected);
        EXPECT_EQ(q_node_get_model(all[f]), model);
        // The clone lives on its own.
        q_node_delete(all[f]);
        EXPECT_EQ(q_model_get_samples_per_interval(q_node_get_model(clone)), 25u);
        for (std::size_t at = 0; at < q_model_get_size(q_node_get_model(clone)); ++at)
            EXPECT_EQ(set_expression(clone, at, nullptr), none);
        EXPECT_EQ(q_model_delete(q_node_get_model(clone)), none);
        EXPECT_EQ(q_node_get_model(clone), nullptr);
    }
}

// A decision between two parents of no use and a utility.
owned_domain useless_parents() {
    owned_domain domain = network("cd cd dd uo", "02 12 23");
    const nodes all = nodes_of(domain.get());
    for (std::size_t node = 0; node < 3; ++node) {
        q_node_set_name(all[node], std::string(1, "ABD"[node]).c_str());
        q_node_set_number_of_states(all[node], 2);
        q_node_set_state_label(all[node], 0, "zero");
    }
    give_model(all[2], "AB", {"if(A == B, A, B)", R"("one")", "B", "A"});
    return domain;
}

TEST(models, lose_parents_that_are_not_requisite) {
    const owned_domain domain = useless_parents();
    EXPECT_EQ(q_domain_minimize_limid(domain.get()), 2u);
    EXPECT_EQ(model_of(node_at(domain.get(), 2)), R"(: if("zero" == "zero", "zero", "zero"))");
    expect_survivals(useless_parents, call(q_domain_minimize_limid));
}

std::string seen_by_callback;

TEST(models, clean_up_callbacks_run_when_nothing_can_fail_any_more) {
    if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    const owned_domain domain = useless_parents();
    const nodes all = nodes_of(domain.get());
    q_node_set_user_data_cleanup(
        all[0], [](q_node_t node) { seen_by_callback += model_of(q_node_get_children(node)[0]); });
    {
        const fault_plan plan(0, true);
        EXPECT_EQ(q_node_delete(all[0]), q_error_no_memory);
    }
    EXPECT_EQ(q_node_delete(all[0]), none);
    EXPECT_EQ(seen_by_callback, R"(AB: if(A == B, A, B) | "one" | B | A)");
    EXPECT_EQ(model_of(all[2]), R"(B: if("zero" == B, "zero", B) | "one")");
}

TEST(models, weights_follow_the_order_of_the_states) {
    const owned_domain domain = function_of_all();
    q_node_t node = node_at(domain.get(), s);
    give_model(node, "", {"Distribution(0.25, 0.5, 2)"});
    EXPECT_EQ(reorder(node, "hi", "lo", "mid"), none);
    EXPECT_EQ(model_of(node), ": Distribution(2, 0.25, 0.5)");
    give_model(node, "", {"Distribution(1, 2)"});  // no weight for each state: stays
    EXPECT_EQ(reorder(node, "mid", "hi", "lo"), none);
    EXPECT_EQ(model_of(node), ": Distribution(1, 2)");
}

TEST(models, need_no_stack) {
    const owned_domain domain = network("cd fo", "01");
    const nodes all = nodes_of(domain.get());
    q_node_set_subtype(all[0], q_subtype_number);
    q_expression_t tree = reference(all[0]);
    for (int level = 0; level < 300000; ++level) tree = composite(q_operator_negate, {tree});
    EXPECT_EQ(new_model(all[1], ""), none);
    EXPECT_EQ(q_model_set_expression(q_node_get_model(all[1]), 0, tree), none);
    q_node_t clone = q_node_clone(all[1]), twin = q_node_clone(all[0]);
    EXPECT_EQ(q_node_switch_parent(clone, all[0], twin), none);
    EXPECT_EQ(q_node_delete(all[0]), none);
    q_expression_t leaf = expression_of(clone, 0);
    while (q_expression_is_composite(leaf) != 0) leaf = q_expression_get_arguments(leaf)[0];
    EXPECT_EQ(q_expression_get_node(leaf), twin);
}

}  // namespace
