// Expressions and models of nodes in tests, written and read as text.
#pragma once
#include <array>
#include <string>
#include <vector>

#include <quarn.h>

#include "expression_trees.h"
#include "network_building.h"

inline owned_tree parsed(q_domain_t domain, const std::string& text) {
    return owned_tree(q_domain_parse_expression(domain, text.c_str(), nullptr, nullptr));
}
inline std::string text_of(q_expression_t tree) {
    if (tree == nullptr) return "-";
    char* const text = q_expression_to_string(tree);
    const std::string copy(text == nullptr ? "no text" : text);
    q_string_delete(text);
    return copy;
}

// Puts an expression into the model of a node; null: none.
inline q_status_t set_expression(q_node_t owner, std::size_t configuration, const char* text) {
    owned_tree tree;
    if (text != nullptr && !(tree = parsed(q_node_get_domain(owner), text))) return q_error_code();
    const q_status_t status = q_model_set_expression(q_node_get_model(owner), configuration, tree.get());
    if (status == q_error_none) (void)tree.release();
    return status;
}

// A model over nodes whose names are letters, seven at most. Allocates nothing besides.
inline q_status_t new_model(q_node_t owner, const char* names) {
    std::array<q_node_t, 8> nodes{};
    for (auto place = nodes.begin(); *names != '\0'; ++names)
        *place++ = q_domain_get_node_by_name(q_node_get_domain(owner), std::string(1, *names).c_str());
    q_node_new_model(owner, nodes.data());
    return q_error_code();
}
inline void give_model(q_node_t owner, const char* names, const std::vector<const char*>& texts) {
    if (q_model_t old = q_node_get_model(owner)) q_model_delete(old);
    EXPECT_EQ(new_model(owner, names), q_error_none);
    EXPECT_EQ(q_model_get_size(q_node_get_model(owner)), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(set_expression(owner, i, texts[i]), q_error_none) << texts[i];
}

// The names of the model nodes, a colon, and the expressions with bars between them.
inline std::string model_of(q_node_t owner) {
    const q_model_t model = q_node_get_model(owner);
    if (model == nullptr) return "none";
    std::string text;
    for (q_node_t node : listed(q_model_get_nodes(model))) text += q_node_get_name(node);
    text += ':';
    for (std::size_t i = 0; i < q_model_get_size(model); ++i)
        text += (i == 0 ? " " : " | ") + text_of(q_model_get_expression(model, i));
    return text;
}
