// The error codes, and null handles and pointers in every place of every function.
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <thread>
#include <tuple>

#include "network_building.h"

namespace {

TEST(errors, every_code_has_a_name_and_a_description) {
    std::map<uint32_t, const char*> names{{0, "none"},           {5, "twice"},  {28, "compressed"},
                                          {43, "locale"},        {47, "error"}, {48, "no_such_error"},
                                          {~0u, "no_such_error"}};
    for (const auto& [code, name] : names) EXPECT_STREQ(q_error_name(code), name);
    EXPECT_STREQ(q_error_description(28), "The operation is not supported on compressed domains.");
    EXPECT_STREQ(q_error_description(48), "No such error.");
    std::set<std::string> texts;
    for (uint32_t code = 0; code < 44; ++code)
        for (const char* text : {q_error_name(code), q_error_description(code)})
            EXPECT_TRUE(texts.insert(text).second) << code;
}

TEST(errors, each_thread_has_the_code_of_its_last_call) {
    EXPECT_EQ(q_domain_delete(nullptr), q_error_usage);
    q_error_description(500);
    std::thread([] {
        EXPECT_EQ(q_error_code(), q_error_none);
        EXPECT_EQ(q_domain_set_attribute(owned_domain(q_domain_new()).get(), "no key", ""),
                  q_error_invalid_name);
    }).join();
    EXPECT_EQ(q_error_code(), q_error_usage);
    q_domain_delete(q_domain_new());
    EXPECT_EQ(q_error_code(), q_error_none);
}

// What a function returns when it fails: by the type of its result, but for these.
const std::map<std::string, int> other_failures{{"q_node_get_category", -1},
                                                {"q_node_get_kind", -2},
                                                {"q_node_get_subtype", -1},
                                                {"q_expression_get_operator", q_operator_none},
                                                {"q_expression_get_boolean", -1},
                                                {"q_domain_get_log_normalization_constant", 1},
                                                {"q_domain_get_sampled_log_probability", 1}};

template <class Result>
Result failure_of(const std::string& function) {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else if (other_failures.contains(function))
        return Result(other_failures.at(function));
    else
        return std::is_same_v<Result, q_status_t> ? Result(q_error_usage) : Result(-1);
}

// A valid argument; where there is none, it is in a function whose only argument it is.
template <class T>
T valid(q_domain_t domain) {
    static const char* labels[] = {"a", nullptr};
    static int32_t places[2], next = 0;
    static const q_node_t no_nodes[] = {nullptr};
    q_node_t node = q_domain_get_first_node(domain);
    if constexpr (std::is_same_v<T, q_domain_t>) return domain;
    if constexpr (std::is_same_v<T, q_node_t>) return node;
    if constexpr (std::is_same_v<T, q_table_t>) return q_node_get_table(node);
    if constexpr (std::is_same_v<T, const char*>) return labels[0];
    if constexpr (std::is_same_v<T, const char* const*>) return labels;
    if constexpr (std::is_same_v<T, const q_node_t*>) return no_nodes;
    if constexpr (std::is_same_v<T, int32_t*>) return &places[next++ % 2];
    return T{};
}

// User data, callbacks and their data may be null, the value of an attribute, the expression of a model, and lists that
// delete stored ones.
template <class T>
constexpr bool may_be_null =
    !std::is_pointer_v<T> || std::is_same_v<T, void*> || std::is_function_v<std::remove_pointer_t<T>>;

template <class Result, class... Parameters>
void expect_nulls_refused(const std::string& name, Result (*function)(Parameters...)) {
    const bool optional[] = {may_be_null<Parameters>...};
    for (std::size_t null = 0; null < sizeof...(Parameters); ++null) {
        if (optional[null] || (null == 2 && name.ends_with("_set_attribute"))) continue;
        if (null == 2 && name == "q_model_set_expression") continue;
        if (null == 1 &&
            (name.ends_with("_set_initial_triangulation") || name.ends_with("_set_excluded_nodes")))
            continue;
        const owned_domain domain = network("cd");
        std::tuple<Parameters...> arguments{valid<Parameters>(domain.get())...};
        std::size_t place = 0;
        std::apply([&](auto&... each) { (void(place++ == null ? each = {} : each), ...); }, arguments);
        EXPECT_EQ(std::apply(function, arguments), failure_of<Result>(name)) << name << ", argument " << null;
        EXPECT_EQ(q_error_code(), q_error_usage) << name << ", argument " << null;
    }
}

// clang-format off
#define FUNCTIONS \
    q_domain_delete, q_domain_set_log_file, q_domain_set_concurrency_level, q_domain_get_concurrency_level, \
    q_domain_triangulate, q_domain_triangulate_with_order, q_domain_get_elimination_order, \
    q_domain_set_initial_triangulation, q_domain_set_excluded_nodes, q_domain_set_max_separators, \
    q_domain_get_max_separators, q_domain_set_max_separator_size, q_domain_get_max_separator_size, \
    q_domain_set_grain_size, q_domain_get_grain_size, q_domain_new_node, q_domain_get_first_node, \
    q_domain_get_node_by_name, q_domain_set_node_size, q_domain_get_node_size, q_domain_set_attribute, \
    q_domain_get_attribute, q_domain_get_first_attribute, q_attribute_get_next, q_attribute_get_key, \
    q_attribute_get_value, q_domain_set_user_data, q_domain_get_user_data, q_domain_set_user_data_cleanup, \
    q_node_get_next, q_node_get_domain, q_node_get_category, q_node_get_kind, q_node_get_subtype, \
    q_node_set_category, q_node_set_subtype, q_node_set_name, q_node_get_name, q_node_set_label, \
    q_node_get_label, q_node_set_position, q_node_get_position, q_node_set_number_of_states, \
    q_node_get_number_of_states, q_node_set_state_label, q_node_get_state_label, q_node_set_state_value, \
    q_node_get_state_value, q_node_get_state_index_from_label, q_node_get_state_index_from_value, \
    q_node_reorder_states, q_node_add_parent, q_node_remove_parent, q_node_remove_parent_keep_state, \
    q_node_switch_parent, q_node_get_parents, q_node_get_children, q_node_get_ancestors, \
    q_node_get_descendants, q_node_clone, q_node_delete, q_node_set_attribute, q_node_get_attribute, \
    q_node_get_first_attribute, q_node_set_user_data, q_node_get_user_data, q_node_set_user_data_cleanup, \
    q_node_get_table, q_node_touch_table, q_node_get_experience_table, q_node_get_fading_table, \
    q_node_new_experience_table, q_node_new_fading_table, q_table_get_nodes, q_table_get_data, \
    q_table_get_size, q_table_get_cg_size, q_table_get_mean, q_table_get_covariance, q_table_get_variance, \
    q_node_set_cg_intercept, q_node_set_cg_coefficient, q_node_set_cg_variance, q_node_get_cg_intercept, \
    q_node_get_cg_coefficient, q_node_get_cg_variance, q_domain_compile, q_domain_uncompile, \
    q_domain_is_compiled, q_domain_is_triangulated, q_domain_get_first_junction_tree, \
    q_junction_tree_get_next, q_junction_tree_get_root, q_junction_tree_get_cliques, \
    q_junction_tree_get_total_size, q_clique_get_junction_tree, q_clique_get_members, \
    q_clique_get_neighbors, q_node_get_junction_tree, q_domain_get_d_connected_nodes, \
    q_domain_get_d_separated_nodes, q_node_enter_finding, q_node_select_state, \
    q_node_enter_value, q_node_get_entered_value, q_node_get_propagated_value, \
    q_node_likelihood_is_propagated, q_junction_tree_evidence_to_propagate, \
    q_junction_tree_evidence_is_propagated, q_domain_likelihood_is_propagated, \
    q_junction_tree_likelihood_is_propagated, q_domain_cg_evidence_is_propagated, \
    q_junction_tree_cg_evidence_is_propagated, q_domain_equilibrium_is, q_junction_tree_equilibrium_is, \
    q_domain_evidence_mode_is, q_junction_tree_evidence_mode_is, \
    q_node_retract_findings, q_domain_retract_findings, q_node_get_entered_finding, \
    q_node_get_propagated_finding, q_node_get_selected_state, q_node_get_propagated_state, \
    q_node_evidence_is_entered, q_node_evidence_is_propagated, q_node_evidence_to_propagate, \
    q_node_likelihood_is_entered, q_domain_evidence_to_propagate, q_domain_evidence_is_propagated, \
    q_domain_propagate, q_domain_compress, q_domain_is_compressed, q_junction_tree_propagate, \
    q_clique_propagate, q_domain_update_policies, q_node_get_belief, q_node_get_mean, q_node_get_variance, q_node_get_numeric_mean, \
    q_node_get_numeric_variance, q_node_get_value, q_node_get_expected_utility, \
    q_node_get_utility_variance, q_node_get_utility_minimum, q_node_get_utility_maximum, \
    q_domain_get_expected_utility, q_domain_get_normalization_constant, \
    q_domain_get_log_normalization_constant, q_domain_print_beliefs, q_domain_minimize_limid, \
    q_expression_make_composite, q_expression_make_number, q_expression_make_label, q_expression_make_node, \
    q_expression_make_boolean, q_expression_get_operator, q_expression_get_arguments, \
    q_expression_get_number, q_expression_get_label, q_expression_get_node, q_expression_get_boolean, \
    q_expression_is_composite, q_expression_clone, q_expression_delete, q_expression_to_string, \
    q_domain_parse_expression, q_domain_save_case, q_domain_parse_case, q_node_new_model, q_node_get_model, q_model_delete, q_model_get_nodes, \
    q_model_get_size, q_model_set_expression, q_model_get_expression, q_model_set_samples_per_interval, \
    q_model_get_samples_per_interval, q_net_parse_domain, q_net_parse_domain_plain, \
    q_domain_save_as_net, q_domain_to_net, q_domain_seed_random, q_domain_get_uniform_random, \
    q_domain_get_normal_random, q_domain_simulate, q_node_get_sampled_state, q_node_get_sampled_value, \
    q_node_get_sampled_utility, q_domain_get_sampled_log_probability
// clang-format on
#define TEXT_OF(...) #__VA_ARGS__
#define NAMES_OF(list) TEXT_OF(list)

TEST(errors, null_handles_are_refused_in_every_place) {
    std::vector<std::string> names;
    std::istringstream listed(NAMES_OF((FUNCTIONS)));
    for (std::string name; std::getline(listed >> std::ws, name, ',');) names.push_back(name);
    names.front().erase(0, 1);
    names.back().pop_back();
    auto expect_all_refused = [name = names.begin()](auto... functions) mutable {
        (expect_nulls_refused(*name++, functions), ...);
    };
    expect_all_refused(FUNCTIONS);

    std::set<std::string> declared, covered(names.begin(), names.end());
    std::ifstream header(QUARN_SOURCE_DIR "/include/quarn.h");
    for (std::string line; std::getline(header, line);)
        if (line.starts_with("Q_API")) {
            line.erase(line.find('('));
            declared.insert(line.substr(line.rfind(' ') + 1));
        }
    covered.insert(
        {"q_error_code", "q_error_name", "q_error_description", "q_domain_new", "q_string_delete"});
    EXPECT_EQ(covered, declared);
}

}  // namespace
