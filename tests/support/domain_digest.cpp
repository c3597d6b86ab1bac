#include "domain_digest.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "network_building.h"

namespace {

class digest_writer {
public:
    explicit digest_writer(q_domain_t domain) : domain_(domain), nodes_(nodes_of(domain)) {}

    std::string write() {
        int32_t width = 0;
        int32_t height = 0;
        q_domain_get_node_size(domain_, &width, &height);
        add("size", {double(width), double(height)});
        add_attributes(q_domain_get_first_attribute(domain_));
        add_names();
        for (q_node_t node : nodes_) {
            add_properties(node);
            if (q_node_get_kind(node) == q_kind_discrete) add_states(node);
            add_table("table", q_node_get_table(node));
            add_table("experience", q_node_get_experience_table(node));
            add_table("fading", q_node_get_fading_table(node));
            if (q_node_get_kind(node) == q_kind_continuous) add_cg_parameters(node);
        }
        return text_;
    }

private:
    void add(const std::string& word) { text_ += word + '\n'; }
    void add(const std::string& word, const std::vector<double>& numbers) {
        text_ += word;
        for (double number : numbers) {
            char digits[40];
            std::snprintf(digits, sizeof digits, " %.17g", number);
            text_ += digits;
        }
        text_ += '\n';
    }
    void add_nodes(const std::string& word, const q_node_t* list) {
        std::vector<double> numbers;
        for (q_node_t node : listed(list)) numbers.push_back(number_of(node));
        add(word, numbers);
    }
    double number_of(q_node_t node) const {
        return static_cast<double>(std::find(nodes_.begin(), nodes_.end(), node) - nodes_.begin());
    }

    void add_attributes(q_attribute_t attribute) {
        for (; attribute != nullptr; attribute = q_attribute_get_next(attribute))
            add(std::string(q_attribute_get_key(attribute)) + " = " + q_attribute_get_value(attribute));
    }

    void add_names() {
        const auto add_name = [&](const std::string& name) {
            if (q_node_t node = q_domain_get_node_by_name(domain_, name.c_str()))
                add(name, {number_of(node)});
        };
        for (char letter = 'a'; letter <= 'z'; ++letter) add_name(std::string(1, letter));
        for (const char* prefix : {"C", "D", "F", "U", "node_"})
            for (int number = 0; number <= 30; ++number) add_name(prefix + std::to_string(number));
    }

    void add_properties(q_node_t node) {
        int32_t x = 0;
        int32_t y = 0;
        q_node_get_position(node, &x, &y);
        add("node", {number_of(node), double(q_node_get_category(node)), double(q_node_get_kind(node)),
                     double(x), double(y)});
        add(q_node_get_label(node));
        add_attributes(q_node_get_first_attribute(node));
        add_nodes("parents", q_node_get_parents(node));
        add_nodes("children", q_node_get_children(node));
    }

    void add_states(q_node_t node) {
        const std::size_t count = q_node_get_number_of_states(node);
        add("states",
            {double(q_node_get_subtype(node)), double(count), double(q_node_get_selected_state(node))});
        if (count > readable) return;
        for (std::size_t state = 0; state < count; ++state)
            add(q_node_get_state_label(node, state), {q_node_get_entered_finding(node, state)});
        std::vector<double> values;
        for (std::size_t state = 0; state <= count; ++state)
            values.push_back(q_node_get_state_value(node, state));
        add("values", values);
    }

    void add_table(const std::string& word, q_table_t table) {
        if (table == nullptr) return;
        add_nodes(word, q_table_get_nodes(table));
        const std::size_t size = q_table_get_size(table);
        add("size", {double(size), double(q_table_get_cg_size(table))});
        if (size <= readable) add("data", data_of(table));
    }

    void add_cg_parameters(q_node_t node) {
        const std::size_t size = q_table_get_size(q_node_get_table(node));
        for (std::size_t i = 0; i < size && size <= readable; ++i) {
            std::vector<double> numbers{q_node_get_cg_intercept(node, i), q_node_get_cg_variance(node, i)};
            for (q_node_t parent : listed(q_node_get_parents(node)))
                if (q_node_get_kind(parent) == q_kind_continuous)
                    numbers.push_back(q_node_get_cg_coefficient(node, parent, i));
            add("density", numbers);
        }
    }

    static constexpr std::size_t readable = 10000;  // larger tables are not looked into

    q_domain_t domain_;
    std::vector<q_node_t> nodes_;
    std::string text_;
};

}  // namespace

std::string digest(q_domain_t domain) { return domain == nullptr ? "" : digest_writer(domain).write(); }
