// Every function of the interface that takes arguments of its objects, and what each returns when it fails.
#pragma once
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <quarn.h>

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
    q_clique_propagate, q_domain_update_policies, q_node_get_belief, q_node_get_mean, q_node_get_variance, \
    q_node_get_numeric_mean, q_node_get_numeric_variance, q_node_get_value, q_node_get_expected_utility, \
    q_node_get_utility_variance, q_node_get_utility_minimum, q_node_get_utility_maximum, \
    q_domain_get_expected_utility, q_domain_get_normalization_constant, \
    q_domain_get_log_normalization_constant, q_domain_print_beliefs, q_domain_minimize_limid, \
    q_expression_make_composite, q_expression_make_number, q_expression_make_label, q_expression_make_node, \
    q_expression_make_boolean, q_expression_get_operator, q_expression_get_arguments, \
    q_expression_get_number, q_expression_get_label, q_expression_get_node, q_expression_get_boolean, \
    q_expression_is_composite, q_expression_clone, q_expression_delete, q_expression_to_string, \
    q_domain_parse_expression, q_domain_save_case, q_domain_parse_case, q_node_new_model, \
    q_node_get_model, q_model_delete, q_model_get_nodes, \
    q_model_get_size, q_model_set_expression, q_model_get_expression, q_model_set_samples_per_interval, \
    q_model_get_samples_per_interval, q_net_parse_domain, q_net_parse_domain_plain, \
    q_domain_save_as_net, q_domain_to_net, q_domain_seed_random, q_domain_get_uniform_random, \
    q_domain_get_normal_random, q_domain_simulate, q_node_get_sampled_state, q_node_get_sampled_value, \
    q_node_get_sampled_utility, q_domain_get_sampled_log_probability
// clang-format on
#define TEXT_OF(...) #__VA_ARGS__
#define NAMES_OF(list) TEXT_OF(list)

// The names of FUNCTIONS, in their order.
inline std::vector<std::string> function_names() {
    std::vector<std::string> names;
    std::istringstream listed(NAMES_OF((FUNCTIONS)));
    for (std::string name; std::getline(listed >> std::ws, name, ',');) names.push_back(name);
    names.front().erase(0, 1);
    names.back().pop_back();
    return names;
}

// What a function returns when it fails: by the type of its result, but for these.
inline const std::map<std::string, int> other_failures{{"q_node_get_category", -1},
                                                       {"q_node_get_kind", -2},
                                                       {"q_node_get_subtype", -1},
                                                       {"q_expression_get_operator", q_operator_none},
                                                       {"q_expression_get_boolean", -1},
                                                       {"q_domain_get_log_normalization_constant", 1},
                                                       {"q_domain_get_sampled_log_probability", 1}};

template <class Result>
Result failure_of(const std::string& function, q_error_t code) {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else if (other_failures.contains(function))
        return Result(other_failures.at(function));
    else
        return std::is_same_v<Result, q_status_t> ? Result(code) : Result(-1);
}
