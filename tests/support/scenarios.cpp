#include "scenarios.h"

#include <map>
#include <sstream>

#include "expression_trees.h"
#include "fault_plan.h"

using namespace scenarios;

namespace {

constexpr std::size_t readable = 10000;  // larger tables and nodes are not looked into

// Where the lists that the nodes have handed out are.
std::vector<const q_node_t*> arrays_of(const nodes& all) {
    std::vector<const q_node_t*> arrays;
    for (q_node_t node : all)
        for (const q_node_t* list : {q_node_get_parents(node), q_node_get_children(node)})
            arrays.push_back(list);
    return arrays;
}
nodes all_of(const owned_domain& domain) { return domain ? nodes_of(domain.get()) : nodes{}; }

}  // namespace

std::string digest(q_domain_t domain) {
    if (domain == nullptr) return "";
    std::map<q_node_t, std::size_t> number;
    for (q_node_t node : nodes_of(domain)) number.emplace(node, number.size());
    std::ostringstream text;
    text.precision(17);
    const auto add = [&](const auto&... items) { (void(text << items << ' '), ...), text << '\n'; };
    const auto add_attributes = [&](q_attribute_t attribute) {
        for (; attribute != nullptr; attribute = q_attribute_get_next(attribute))
            add(q_attribute_get_key(attribute), q_attribute_get_value(attribute));
    };
    const auto add_nodes = [&](const char* title, const q_node_t* list) {
        add(title);
        for (q_node_t node : listed(list)) add(number[node]);
    };
    int32_t x = 0, y = 0;
    q_domain_get_node_size(domain, &x, &y);
    add(x, y);
    add_attributes(q_domain_get_first_attribute(domain));
    for (char letter : std::string("CDFUabcdkn"))
        for (int i = -1; i <= 30; ++i) {
            const std::string name = letter + (i < 0 ? "" : std::to_string(i));
            if (q_node_t node = q_domain_get_node_by_name(domain, name.c_str())) add(name, number[node]);
        }
    for (q_node_t node : nodes_of(domain)) {
        q_node_get_position(node, &x, &y);
        add(q_node_get_category(node), q_node_get_kind(node), q_node_get_subtype(node), x, y,
            q_node_get_label(node), q_node_get_selected_state(node));
        add_attributes(q_node_get_first_attribute(node));
        add_nodes("parents", q_node_get_parents(node));
        add_nodes("children", q_node_get_children(node));
        const bool is_continuous = q_node_get_kind(node) == q_kind_continuous;
        const std::size_t states =
            q_node_get_kind(node) == q_kind_discrete ? q_node_get_number_of_states(node) : 0;
        add(states);
        for (std::size_t i = 0; i < states && states <= readable; ++i)
            add(q_node_get_state_label(node, i), q_node_get_entered_finding(node, i));
        if (q_node_get_subtype(node) >= q_subtype_number)
            for (std::size_t i = 0; i <= states && states <= readable; ++i)
                add(q_node_get_state_value(node, i));
        if (q_model_t model = q_node_get_model(node)) {
            add_nodes("model", q_model_get_nodes(model));
            add(q_model_get_size(model), q_model_get_samples_per_interval(model));
            for (std::size_t i = 0; i < q_model_get_size(model); ++i)
                add(contents_of(q_model_get_expression(model, i)));
        }
        for (q_table_t table :
             {q_node_get_table(node), q_node_get_experience_table(node), q_node_get_fading_table(node)}) {
            if (table == nullptr) continue;
            const std::size_t size = q_table_get_size(table);
            add_nodes("table", q_table_get_nodes(table));
            add(size, q_table_get_cg_size(table));
            for (std::size_t i = 0; size <= readable && i < size; ++i) add(q_table_get_data(table)[i]);
            for (std::size_t i = 0; size <= readable && i < size && is_continuous; ++i) {
                add(q_node_get_cg_intercept(node, i), q_node_get_cg_variance(node, i));
                for (q_node_t parent : listed(q_node_get_parents(node)))
                    if (q_node_get_kind(parent) == q_kind_continuous)
                        add(q_node_get_cg_coefficient(node, parent, i));
            }
        }
    }
    return text.str();
}

std::string digest_of_results(q_domain_t domain) {
    if (domain == nullptr) return "";
    std::ostringstream text;
    text.precision(17);
    const auto add = [&](const auto&... items) { (void(text << items << ' '), ...), text << '\n'; };
    add(q_domain_is_triangulated(domain), q_domain_is_compiled(domain), q_domain_is_compressed(domain),
        q_domain_evidence_to_propagate(domain), q_domain_get_log_normalization_constant(domain),
        q_domain_get_expected_utility(domain), q_domain_get_sampled_log_probability(domain));
    for (auto tree = q_domain_get_first_junction_tree(domain); tree != nullptr;
         tree = q_junction_tree_get_next(tree))
        add("tree", q_junction_tree_get_total_size(tree),
            q_junction_tree_equilibrium_is(tree, q_equilibrium_sum),
            q_junction_tree_evidence_mode_is(tree, q_mode_normal));
    // A function that refuses to answer costs more than all the others.
    for (q_node_t node : nodes_of(domain)) {
        const bool is_continuous = q_node_get_kind(node) == q_kind_continuous;
        const bool is_discrete = q_node_get_kind(node) == q_kind_discrete;
        if (is_continuous)
            add(q_node_get_mean(node), q_node_get_variance(node), q_node_get_entered_value(node),
                q_node_get_propagated_value(node));
        if (q_node_get_category(node) == q_category_utility)
            add(q_node_get_expected_utility(node, 0), q_node_get_sampled_utility(node));
        else
            add(is_discrete ? double(q_node_get_sampled_state(node)) : q_node_get_sampled_value(node));
        if (!is_discrete && !is_continuous) add(q_node_get_value(node));
        if (is_discrete) add(q_node_get_propagated_state(node));
        for (std::size_t i = 0; is_discrete && i < q_node_get_number_of_states(node) && i <= readable; ++i)
            add(q_node_get_belief(node, i));
    }
    return text.str();
}

void scenarios::expect_code(const network_builder& build, q_error_t code, const tested_call& call,
                            std::size_t row, const std::function<std::string(q_domain_t)>& state) {
    const owned_domain domain = build();
    EXPECT_EQ(call(domain.get(), all_of(domain)), code) << row;
    EXPECT_EQ(q_error_code(), code) << row;
    EXPECT_TRUE(code == q_error_none || state(domain.get()) == state(build().get())) << row;
}

void scenarios::expect_survival(const network_builder& build, const tested_call& call, bool can_do_without,
                                std::size_t row, const std::function<std::string(q_domain_t)>& state) {
    if (!fault_plan::are_possible()) GTEST_SKIP() << "another tool has replaced operator new";
    const owned_domain undisturbed = build();
    ASSERT_EQ(call(undisturbed.get(), all_of(undisturbed)), q_error_none) << row;
    const std::string before = state(build().get()), after = state(undisturbed.get());
    for (bool lasting : {false, true}) {
        bool fired = true;  // else there is no later allocation
        for (std::size_t n = 0; fired && !testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE("row " + std::to_string(row) + ", allocation " + std::to_string(n));
            owned_domain domain = build();
            const nodes all = all_of(domain);
            const auto arrays = arrays_of(all);
            fault_plan plan(n, lasting);
            const q_status_t status = call(domain.get(), all);
            fired = plan.stop();
            EXPECT_TRUE(status == q_error_none || arrays_of(all) == arrays) << "a list of nodes has moved";
            EXPECT_TRUE(status == q_error_none ? !fired || can_do_without
                                               : fired && status == q_error_no_memory)
                << status;
            EXPECT_EQ(state(domain.get()), status == q_error_none ? after : before);
            EXPECT_TRUE(status == q_error_none || call(domain.get(), all) == q_error_none);
            EXPECT_EQ(state(domain.get()), after);
            domain.reset();
            EXPECT_EQ(plan.leaked(), 0u);
        }
    }
}

void expect_survives_lack_of_memory(const allocating_call& tested) {
    SCOPED_TRACE(tested.name);
    expect_survival(
        tested.build, [&](q_domain_t domain, const nodes&) { return tested.call(domain); },
        tested.can_do_without, 0);
}
