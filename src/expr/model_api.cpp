#include "api_frame.h"
#include "expression_types.h"
#include "model.h"

using namespace quarn;

q_model_t q_node_new_model(q_node_t node, const q_node_t* nodes) {
    return api_call<q_model_t>(nullptr, {node, nodes}, [&] {
        std::size_t count = 0;
        while (nodes[count] != nullptr) ++count;
        return &create_model(*node, {nodes, count});
    });
}

q_model_t q_node_get_model(q_node_t node) {
    return api_call<q_model_t>(nullptr, {node}, [&] { return node->model.get(); });
}

q_status_t q_model_delete(q_model_t model) {
    return api_status({model}, [&] { delete_model(*model); });
}

const q_node_t* q_model_get_nodes(q_model_t model) {
    return api_call<const q_node_t*>(nullptr, {model}, [&] { return model->nodes.array(); });
}

size_t q_model_get_size(q_model_t model) {
    return api_call<size_t>(no_size, {model}, [&] { return model->expressions.size(); });
}

q_status_t q_model_set_expression(q_model_t model, size_t configuration, q_expression_t expression) {
    return api_status({model}, [&] {
        require(configuration < model->expressions.size());
        if (expression != nullptr) {
            require(!expression->is_owned());
            require_suitable(*model->owner, *expression);
        }
        set_expression(*model, configuration, expression);
    });
}

q_expression_t q_model_get_expression(q_model_t model, size_t configuration) {
    return api_call<q_expression_t>(nullptr, {model}, [&] {
        require(configuration < model->expressions.size());
        return model->expressions[configuration].get();
    });
}

q_status_t q_model_set_samples_per_interval(q_model_t model, size_t count) {
    return api_status({model}, [&] {
        require(count > 0 && count <= most_samples_per_interval);
        model->samples_per_interval = count;
    });
}

size_t q_model_get_samples_per_interval(q_model_t model) {
    return api_call<size_t>(no_size, {model}, [&] { return model->samples_per_interval; });
}
