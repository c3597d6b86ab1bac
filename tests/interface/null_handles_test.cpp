// Null handles and pointers, for every function of the public header.
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"

namespace {

// What a function returns when it fails, by the type of its result; exceptions are listed with the functions.
template <class Result>
Result failure_value() {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else if constexpr (std::is_same_v<Result, q_status_t>)
        return q_error_usage;
    else if constexpr (std::is_unsigned_v<Result>)
        return std::numeric_limits<Result>::max();
    else
        return Result(-1);
}

// A valid argument of any type: in a call with a null before or after it, it is not looked at.
class any_arguments {
public:
    any_arguments() : domain_(q_domain_new()), node_(new_chance(domain_.get(), "a", 2)) {
        q_domain_set_attribute(domain_.get(), "key", "value");
    }
    template <class T>
    T get() {
        if constexpr (std::is_same_v<T, q_domain_t>)
            return domain_.get();
        else if constexpr (std::is_same_v<T, q_node_t>)
            return node_;
        else if constexpr (std::is_same_v<T, q_table_t>)
            return q_node_get_table(node_);
        else if constexpr (std::is_same_v<T, q_attribute_t>)
            return q_domain_get_first_attribute(domain_.get());
        else if constexpr (std::is_same_v<T, const char*>)
            return "key";
        else if constexpr (std::is_same_v<T, const char* const*>)
            return labels_;
        else if constexpr (std::is_same_v<T, int32_t*>)
            return &numbers_[next_++ % 2];
        else
            return T{};
    }

private:
    owned_domain domain_;
    q_node_t node_;
    const char* labels_[3] = {"a", "b", nullptr};
    int32_t numbers_[2] = {};
    std::size_t next_ = 0;
};

// User data, callbacks and their data may be null.
template <class T>
constexpr bool may_be_null =
    !std::is_pointer_v<T> || std::is_same_v<T, void*> || std::is_function_v<std::remove_pointer_t<T>>;

template <class Result, class... Parameters>
std::function<void()> with_each_null(Result (*function)(Parameters...),
                                     std::type_identity_t<Result> failed = failure_value<Result>(),
                                     std::size_t required = sizeof...(Parameters)) {
    return [=] {
        const auto call_with_null = [&]<std::size_t... i>(std::size_t null, std::index_sequence<i...>) {
            any_arguments valid;
            std::tuple<Parameters...> arguments{valid.get<Parameters>()...};
            const bool optional = ((null == i && may_be_null<Parameters>) || ...);
            if (optional || null >= required) return;
            ((null == i ? void(std::get<i>(arguments) = Parameters{}) : void()), ...);
            EXPECT_EQ(std::apply(function, arguments), failed) << "argument " << null;
            EXPECT_EQ(q_error_code(), q_error_usage) << "argument " << null;
        };
        for (std::size_t null = 0; null < sizeof...(Parameters); ++null)
            call_with_null(null, std::index_sequence_for<Parameters...>{});
    };
}

struct tested_function {
    const char* name;
    std::function<void()> with_each_null;
};

#define FUNCTION(name, ...)                                                                                  \
    { #name, with_each_null(name __VA_OPT__(, ) __VA_ARGS__) }

const tested_function functions[] = {
    FUNCTION(q_domain_delete),
    FUNCTION(q_domain_set_log_file),
    FUNCTION(q_domain_new_node),
    FUNCTION(q_domain_get_first_node),
    FUNCTION(q_domain_get_node_by_name),
    FUNCTION(q_domain_set_node_size),
    FUNCTION(q_domain_get_node_size),
    FUNCTION(q_domain_set_attribute, q_error_usage, 2),
    FUNCTION(q_domain_get_attribute),
    FUNCTION(q_domain_get_first_attribute),
    FUNCTION(q_attribute_get_next),
    FUNCTION(q_attribute_get_key),
    FUNCTION(q_attribute_get_value),
    FUNCTION(q_domain_set_user_data),
    FUNCTION(q_domain_get_user_data),
    FUNCTION(q_domain_set_user_data_cleanup),
    FUNCTION(q_node_get_next),
    FUNCTION(q_node_get_domain),
    FUNCTION(q_node_get_category, -1),
    FUNCTION(q_node_get_kind, -2),
    FUNCTION(q_node_get_subtype, -1),
    FUNCTION(q_node_set_category),
    FUNCTION(q_node_set_subtype),
    FUNCTION(q_node_set_name),
    FUNCTION(q_node_get_name),
    FUNCTION(q_node_set_label),
    FUNCTION(q_node_get_label),
    FUNCTION(q_node_set_position),
    FUNCTION(q_node_get_position),
    FUNCTION(q_node_set_number_of_states),
    FUNCTION(q_node_get_number_of_states),
    FUNCTION(q_node_set_state_label),
    FUNCTION(q_node_get_state_label),
    FUNCTION(q_node_set_state_value),
    FUNCTION(q_node_get_state_value),
    FUNCTION(q_node_get_state_index_from_label),
    FUNCTION(q_node_get_state_index_from_value),
    FUNCTION(q_node_reorder_states),
    FUNCTION(q_node_add_parent),
    FUNCTION(q_node_remove_parent),
    FUNCTION(q_node_remove_parent_keep_state),
    FUNCTION(q_node_switch_parent),
    FUNCTION(q_node_get_parents),
    FUNCTION(q_node_get_children),
    FUNCTION(q_node_get_ancestors),
    FUNCTION(q_node_get_descendants),
    FUNCTION(q_node_clone),
    FUNCTION(q_node_delete),
    FUNCTION(q_node_set_attribute, q_error_usage, 2),
    FUNCTION(q_node_get_attribute),
    FUNCTION(q_node_get_first_attribute),
    FUNCTION(q_node_set_user_data),
    FUNCTION(q_node_get_user_data),
    FUNCTION(q_node_set_user_data_cleanup),
    FUNCTION(q_node_get_table),
    FUNCTION(q_node_touch_table),
    FUNCTION(q_node_get_experience_table),
    FUNCTION(q_node_get_fading_table),
    FUNCTION(q_node_new_experience_table),
    FUNCTION(q_node_new_fading_table),
    FUNCTION(q_table_get_nodes),
    FUNCTION(q_table_get_data),
    FUNCTION(q_table_get_size),
    FUNCTION(q_table_get_cg_size),
    FUNCTION(q_table_get_mean),
    FUNCTION(q_table_get_covariance),
    FUNCTION(q_table_get_variance),
    FUNCTION(q_node_set_cg_intercept),
    FUNCTION(q_node_set_cg_coefficient),
    FUNCTION(q_node_set_cg_variance),
    FUNCTION(q_node_get_cg_intercept),
    FUNCTION(q_node_get_cg_coefficient),
    FUNCTION(q_node_get_cg_variance),
    FUNCTION(q_domain_compile),
    FUNCTION(q_domain_uncompile),
    FUNCTION(q_domain_is_compiled),
    FUNCTION(q_domain_is_triangulated),
    FUNCTION(q_domain_get_first_junction_tree),
    FUNCTION(q_junction_tree_get_next),
    FUNCTION(q_junction_tree_get_root),
    FUNCTION(q_junction_tree_get_cliques),
    FUNCTION(q_junction_tree_get_total_size),
    FUNCTION(q_clique_get_junction_tree),
    FUNCTION(q_clique_get_members),
    FUNCTION(q_clique_get_neighbors),
    FUNCTION(q_node_get_junction_tree),
    FUNCTION(q_node_enter_finding),
    FUNCTION(q_node_select_state),
    FUNCTION(q_node_retract_findings),
    FUNCTION(q_domain_retract_findings),
    FUNCTION(q_node_get_entered_finding),
    FUNCTION(q_node_get_propagated_finding),
    FUNCTION(q_node_get_selected_state),
    FUNCTION(q_node_get_propagated_state),
    FUNCTION(q_node_evidence_is_entered),
    FUNCTION(q_node_evidence_is_propagated),
    FUNCTION(q_node_evidence_to_propagate),
    FUNCTION(q_node_likelihood_is_entered),
    FUNCTION(q_domain_evidence_to_propagate),
    FUNCTION(q_domain_evidence_is_propagated),
    FUNCTION(q_domain_propagate),
    FUNCTION(q_node_get_belief),
    FUNCTION(q_domain_get_normalization_constant),
    FUNCTION(q_domain_get_log_normalization_constant, 1.0),
    FUNCTION(q_net_parse_domain),
};

TEST(null_handles, are_refused_in_every_place) {
    for (const tested_function& tested : functions) {
        SCOPED_TRACE(tested.name);
        tested.with_each_null();
    }
}

TEST(null_handles, no_function_is_missing_here) {
    std::set<std::string> missing;
    std::ifstream header(QUARN_SOURCE_DIR "/include/quarn.h");
    for (std::string line; std::getline(header, line);)
        if (line.starts_with("Q_API")) {
            const std::size_t start = line.find("q_", line.rfind(' ', line.find('(')));
            missing.insert(line.substr(start, line.find('(') - start));
        }
    EXPECT_GE(missing.size(), std::size(functions));
    for (const char* without : {"q_error_code", "q_error_name", "q_error_description", "q_domain_new"})
        missing.erase(without);
    for (const tested_function& tested : functions) missing.erase(tested.name);
    EXPECT_EQ(missing, std::set<std::string>{});
}

}  // namespace
