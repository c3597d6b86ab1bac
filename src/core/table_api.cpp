#include "api_frame.h"
#include "node.h"
#include "table.h"

using namespace quarn;

namespace {

enum class moment { mean, covariance };

double read_moment(table& asked, std::size_t configuration, moment wanted, const node* a, const node* b) {
    const std::size_t i = asked.continuous_position(a);
    const std::size_t j = asked.continuous_position(b);
    require(configuration < asked.size && i < asked.roles.size() && j < asked.roles.size());
    require(asked.roles[i] == cg_role::head && asked.roles[j] == cg_role::head);
    require(std::ranges::count(asked.roles, cg_role::tail) == 0);
    asked.materialise();
    const std::size_t entry = wanted == moment::mean ? cg_mean(i) : cg_covariance(i, j);
    return asked.moments[configuration * asked.block_size() + entry];
}

double& parameter(node& owner, std::size_t configuration, cg_term term, const node* parent = nullptr) {
    require(owner.is(q_category_chance) && owner.is_continuous());
    return cg_parameter(owner, configuration, term, parent);
}

void write_parameter(node& owner, double& place, double value) {
    place = value;
    owner.table_changed();
}

}  // namespace

q_table_t q_node_get_table(q_node_t node) {
    return api_call<q_table_t>(nullptr, {node}, [&] {
        require(node->has_kind() || node->is_utility());
        return &own_table(*node);
    });
}

q_status_t q_node_touch_table(q_node_t node) {
    return api_status({node}, [&] {
        require(node->has_kind() || node->is_utility());
        node->table_changed();
    });
}

q_table_t q_node_get_experience_table(q_node_t node) {
    return api_call<q_table_t>(nullptr, {node}, [&] { return node->experience.get(); });
}

q_table_t q_node_get_fading_table(q_node_t node) {
    return api_call<q_table_t>(nullptr, {node}, [&] { return node->fading.get(); });
}

q_table_t q_node_new_experience_table(q_node_t node) {
    return api_call<q_table_t>(nullptr, {node}, [&] {
        require(node->is(q_category_chance));
        if (!node->experience) node->experience = new_parent_table(table_type::zeros, *node);
        return node->experience.get();
    });
}

q_table_t q_node_new_fading_table(q_node_t node) {
    return api_call<q_table_t>(nullptr, {node}, [&] {
        require(node->is(q_category_chance) && node->is_discrete());
        if (!node->fading) node->fading = new_parent_table(table_type::ones, *node);
        return node->fading.get();
    });
}

const q_node_t* q_table_get_nodes(q_table_t table) {
    return api_call<const q_node_t*>(nullptr, {table}, [&] { return table->nodes.array(); });
}

q_number_t* q_table_get_data(q_table_t table) {
    return api_call<q_number_t*>(nullptr, {table}, [&] {
        table->materialise();
        return table->data.data();
    });
}

size_t q_table_get_size(q_table_t table) {
    return api_call<size_t>(no_size, {table}, [&] {
        require(table->size != largest_size, q_error_size_too_large);
        return table->size;
    });
}

size_t q_table_get_cg_size(q_table_t table) {
    return api_call<size_t>(no_size, {table}, [&] {
        require(table->cg_size() != largest_size, q_error_size_too_large);
        return table->cg_size();
    });
}

q_number_t q_table_get_mean(q_table_t table, size_t configuration, q_node_t node) {
    return api_call<q_number_t>(-1.0, {table, node},
                                [&] { return read_moment(*table, configuration, moment::mean, node, node); });
}

q_number_t q_table_get_covariance(q_table_t table, size_t configuration, q_node_t node1, q_node_t node2) {
    return api_call<q_number_t>(-1.0, {table, node1, node2}, [&] {
        return read_moment(*table, configuration, moment::covariance, node1, node2);
    });
}

q_number_t q_table_get_variance(q_table_t table, size_t configuration, q_node_t node) {
    return api_call<q_number_t>(-1.0, {table, node}, [&] {
        return read_moment(*table, configuration, moment::covariance, node, node);
    });
}

q_status_t q_node_set_cg_intercept(q_node_t node, size_t configuration, q_number_t value) {
    return api_status(
        {node}, [&] { write_parameter(*node, parameter(*node, configuration, cg_term::intercept), value); });
}

q_status_t q_node_set_cg_coefficient(q_node_t node, q_node_t parent, size_t configuration, q_number_t value) {
    return api_status({node, parent}, [&] {
        write_parameter(*node, parameter(*node, configuration, cg_term::coefficient, parent), value);
    });
}

q_status_t q_node_set_cg_variance(q_node_t node, size_t configuration, q_number_t value) {
    return api_status({node}, [&] {
        require(!(value < 0));
        write_parameter(*node, parameter(*node, configuration, cg_term::variance), value);
    });
}

q_number_t q_node_get_cg_intercept(q_node_t node, size_t configuration) {
    return api_call<q_number_t>(-1.0, {node},
                                [&] { return parameter(*node, configuration, cg_term::intercept); });
}

q_number_t q_node_get_cg_coefficient(q_node_t node, q_node_t parent, size_t configuration) {
    return api_call<q_number_t>(
        -1.0, {node, parent}, [&] { return parameter(*node, configuration, cg_term::coefficient, parent); });
}

q_number_t q_node_get_cg_variance(q_node_t node, size_t configuration) {
    return api_call<q_number_t>(-1.0, {node},
                                [&] { return parameter(*node, configuration, cg_term::variance); });
}
