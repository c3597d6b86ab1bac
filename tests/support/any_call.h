// Any function of the interface, called with arguments of the right types that are drawn from what a domain holds.
#pragma once
#include <deque>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <quarn.h>

#include "network_building.h"

// What is asked of a call: which function, and which of the arguments that there could be.
struct call_choice {
    std::string_view function;
    unsigned seed;
};

// The arguments of a call on a domain, made before it, and what may be left to release after it.
class call_arguments {
public:
    call_arguments(const call_choice& asked, q_domain_t domain, std::string path)
        : function_(asked.function), random_(asked.seed), domain_(domain), path_(std::move(path)) {
        if (domain != nullptr) all_ = nodes_of(domain);
    }
    ~call_arguments() {
        for (q_expression_t tree : loose_) q_expression_delete(tree);
    }
    call_arguments(const call_arguments&) = delete;
    call_arguments& operator=(const call_arguments&) = delete;

    template <class T>
    T make() {
        if constexpr (std::is_same_v<T, q_domain_t>) return domain_;
        if constexpr (std::is_same_v<T, q_node_t>) return node();
        if constexpr (std::is_same_v<T, q_table_t>) return q_node_get_table(node());
        if constexpr (std::is_same_v<T, q_model_t>) return q_node_get_model(node());
        if constexpr (std::is_same_v<T, q_junction_tree_t>) return q_node_get_junction_tree(node());
        if constexpr (std::is_same_v<T, q_clique_t>) return clique();
        if constexpr (std::is_same_v<T, q_attribute_t>)
            return any<q_attribute_t>(
                {q_domain_get_first_attribute(domain_), q_node_get_first_attribute(node())});
        if constexpr (std::is_same_v<T, q_expression_t>) return loose_tree();
        if constexpr (std::is_same_v<T, const q_expression_t*>)
            return kept(trees_, {loose_tree(), loose_tree(), nullptr});
        if constexpr (std::is_same_v<T, const q_node_t*>) return node_list();
        if constexpr (std::is_same_v<T, const char*>) return any(texts());
        if constexpr (std::is_same_v<T, const char* const*>) return state_labels();
        if constexpr (std::is_same_v<T, char*>) return q_domain_to_net(domain_);
        if constexpr (std::is_same_v<T, double>) return any<double>({0.5, 1.0});
        if constexpr (std::is_same_v<T, std::size_t>) return any<std::size_t>({0, 1, 2, 4});
        if constexpr (std::is_same_v<T, std::int32_t> || std::is_same_v<T, std::uint32_t>)
            return T(any(numbers()));
        if constexpr (std::is_same_v<T, std::int32_t*>) return &places_.emplace_back();
        return T{};  // callbacks, and what they are given
    }

    // The call has taken what was handed over to it.
    void give_up_trees() { loose_.clear(); }

private:
    template <class T>
    T any(const std::vector<T>& of) {
        return of.empty() ? T{} : of[random_() % of.size()];
    }
    template <class T>
    static const T* kept(std::deque<std::vector<T>>& in, std::vector<T> items) {
        return in.emplace_back(std::move(items)).data();
    }
    bool is(std::string_view part) const { return function_.find(part) != std::string_view::npos; }

    // Of tables, the nodes that most can be asked about.
    q_node_t node() {
        std::vector<q_node_t> continuous;
        for (q_node_t node : all_)
            if (is("q_table_") && q_node_get_kind(node) == q_kind_continuous) continuous.push_back(node);
        return last_ = any(continuous.empty() ? all_ : continuous);
    }
    q_clique_t clique() {
        const q_clique_t* cliques = q_junction_tree_get_cliques(q_node_get_junction_tree(node()));
        return cliques == nullptr ? nullptr : any(listed(cliques));
    }
    q_expression_t loose_tree() {
        if (domain_ == nullptr) return loose_.emplace_back(q_expression_make_number(2));
        const char* const text = any<const char*>({"1", "2.5 * 3", "true", "\"yes\"", "if(true, 1, 2)", "A"});
        const q_expression_t tree = q_domain_parse_expression(domain_, text, nullptr, nullptr);
        return tree == nullptr ? nullptr : loose_.emplace_back(tree);
    }
    const q_node_t* node_list() {
        std::vector<q_node_t> list;
        const auto uses = random_() % 4;
        for (q_node_t node : all_) {
            const bool random = q_node_get_category(node) == q_category_chance ||
                                q_node_get_category(node) == q_category_decision;
            const bool discrete = q_node_get_kind(node) == q_kind_discrete;
            if (uses == 0 ? random : uses == 1 && random && discrete) list.push_back(node);
        }
        if (uses == 2) list.push_back(node());
        list.push_back(nullptr);
        return kept(nodes_, std::move(list));
    }
    std::vector<const char*> texts() {
        if (is("net_parse")) return {net_text};
        if (is("parse_expression")) return {"if(A == \"no\", 1, 2) + max(1, 2, \"3\" == \"4\")", "1 + 2"};
        if (is("_log_file") || is("save") || is("parse_case")) return {path_.c_str()};
        return {
            "a text that is too long for any place within an object", "first", "second", "A", "yes", "new"};
    }
    const char* const* state_labels() {
        std::vector<const char*> labels;
        const bool has_states = q_node_get_kind(last_) == q_kind_discrete;
        for (std::size_t i = has_states ? q_node_get_number_of_states(last_) : 0; i-- > 0;)
            labels.push_back(q_node_get_state_label(last_, i));
        labels.push_back(nullptr);
        return labels_.emplace_back(std::move(labels)).data();
    }
    std::vector<int> numbers() const {
        if (is("new_node") || is("set_category")) return {5, 7, 8, 9, 0, 1, -1};
        if (is("subtype")) return {30, 31, 32, 33};
        if (is("triangulate")) return {15, 16, 17, 18, 19, 20};
        if (is("propagate")) return {11, 12, 20, 21};
        if (is("composite")) return {80, 81, 101, 102};
        return {0, 1, 11, 20};
    }

    static constexpr const char* net_text = R"(net { note = "a text"; } node A { states = ("no" "yes"); }
decision D { states = ("a" "b"); } node N { subtype = number; states = ("" ""); state_values = (0 1); label = "n"; }
function F {} utility U {} potential (A) { data = (1 2); } potential (U | D A) { data = ((1 2) (3 4)); }
potential (N | A) { model_nodes = (A); model_data = (1, Distribution(1, 2)); data = ((1 0) (0.5 0.5)); }
potential (F | N) { model_nodes = (); model_data = (N + 1); })";

    const std::string_view function_;
    std::mt19937 random_;
    const q_domain_t domain_;
    const std::string path_;
    std::vector<q_node_t> all_;
    q_node_t last_ = nullptr;
    std::vector<q_expression_t> loose_;
    std::deque<std::vector<q_expression_t>> trees_;
    std::deque<std::vector<q_node_t>> nodes_;
    std::deque<std::vector<const char*>> labels_;
    std::deque<std::int32_t> places_;
};
