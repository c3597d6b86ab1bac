// Lack of memory in every operation that changes a network or makes part of one.
#include <numeric>

#include "node_models.h"
#include "scenarios.h"

using namespace scenarios;

namespace {

void number_entries(q_table_t table) {
    std::iota(q_table_get_data(table), q_table_get_data(table) + q_table_get_size(table), 1.0);
}

// Where the nodes of family() are.
enum : std::size_t { a, b, other_b, c, x, y, z, f };

// Discrete and continuous nodes with all kinds of tables, properties and evidence, and a model.
owned_domain family() {
    owned_domain domain = network("cd cd cd cd cc cc cc fo", "03 13 04 05 45");
    const nodes n = nodes_of(domain.get());
    for (std::size_t node : {a, b, other_b, c})
        q_node_set_number_of_states(n[node], node == std::size_t(a) ? 2 : 3);
    q_domain_set_attribute(domain.get(), "made", "by hand");
    q_node_set_label(n[c], "a child");
    for (const char* key : {"first", "second"}) q_node_set_attribute(n[c], key, key);
    q_node_set_state_label(n[a], 0, "no");
    q_node_set_state_label(n[a], 1, "yes");
    for (std::size_t node : {b, other_b}) {
        q_node_set_subtype(n[node], q_subtype_number);
        for (std::size_t state = 0; state < 3; ++state) q_node_set_state_value(n[node], state, double(state));
    }
    q_node_select_state(n[a], 1);
    q_node_enter_finding(n[b], 2, 0.25);
    for (std::size_t i = 0; i < 2; ++i) {
        q_node_set_cg_intercept(n[y], i, 3.5 + double(i));
        q_node_set_cg_coefficient(n[y], n[x], i, -2.0 - double(i));
    }
    for (q_table_t table :
         {q_node_get_table(n[c]), q_node_new_experience_table(n[c]), q_node_new_fading_table(n[c]),
          q_node_get_table(n[a]), q_node_new_experience_table(n[y]), q_node_get_table(n[z])})
        number_entries(table);
    q_node_set_name(n[a], "a");
    q_node_set_name(n[b], "b");
    give_model(n[c], "ab",
               {R"(if(a == "no", a, "yes"))", "Distribution(b, variance(b), #b)", nullptr, R"("one")", "a",
                R"(if(quantile(b, 0.5) > 0, a, "none"))"});
    return domain;
}

// So many nodes that names are found by an index; the last one has no name.
owned_domain crowd() {
    owned_domain domain = network("cd cd cd cd cd cd cd cd cd cd cd cd cd");
    for (std::size_t i = 0; i < 12; ++i)
        q_node_set_name(node_at(domain.get(), i), ("n" + std::to_string(i)).c_str());
    return domain;
}
owned_domain indexed_crowd() {
    owned_domain domain = crowd();
    EXPECT_NE(q_domain_get_node_by_name(domain.get(), "n3"), nullptr);
    return domain;
}

const double* table_numbers(q_node_t node) {
    q_table_t table = q_node_get_table(node);
    return table == nullptr ? nullptr : q_table_get_data(table);
}
q_status_t new_domain() {
    q_domain_t made = q_domain_new();
    return made == nullptr ? q_error_code() : q_domain_delete(made);
}

TEST(lack_of_memory, leaves_everything_as_it_was) {
    const char* const text = "a text that is too long for any place within an object";
    static const char* const order[] = {"yes", "no", nullptr};
    expect_survivals([] { return owned_domain(); }, call(new_domain));
    expect_survivals([] { return network(""); }, call(new_node, "cc"), call(new_node, "dd"),
                     call(new_node, "uo"), call(q_domain_set_log_file, "/dev/null", 0));
    const auto count = q_node_set_number_of_states;
    const auto link = q_node_add_parent;
    expect_survivals(
        family, call(new_node, "fd"), call(q_domain_set_attribute, "key", text),
        call(q_domain_set_attribute, "made", text), call(q_node_set_label, c, text),
        call(q_node_set_attribute, c, "third", text), call(q_node_set_attribute, c, "first", text),
        call(q_node_set_attribute, c, "first", nullptr), call(q_node_set_subtype, a, q_subtype_boolean),
        call(count, a, 4), call(count, b, 5), call(count, c, 7), call(count, b, 2), call(count, a, 1),
        call(q_node_set_state_label, a, 1, text), call(q_node_set_state_label, c, 1, "one"),
        call(q_node_reorder_states, a, order), call(link, c, other_b), call(link, y, b), call(link, y, z),
        call(link, z, b), call(link, f, y), call(q_node_remove_parent, c, a),
        call(q_node_remove_parent, y, x), call(q_node_remove_parent_keep_state, y, a, 1),
        call(q_node_switch_parent, c, b, other_b), call(q_node_clone, c), call(q_node_clone, b),
        call(q_node_clone, y), call(q_node_delete, a), call(q_node_delete, y), call(q_node_get_ancestors, y),
        call(new_model, b, ""), call(new_model, f, ""), call(set_expression, c, 1, "a"),
        call(q_node_remove_parent, c, b), call(q_node_delete, b), call(q_node_clone, a),
        call(q_node_enter_finding, c, 2, 0.5), call(q_node_enter_finding, a, 0, 0.5),
        call(q_node_select_state, b, 1), call(q_domain_retract_findings));
    expect_survivals(crowd, call(q_domain_get_node_by_name, "n7"), call(q_node_set_name, 2, "C29"));
    expect_survivals(indexed_crowd, call(q_node_set_name, 2, "C30"), call(q_node_get_name, 12),
                     call(q_node_delete, 4));
    // The tables are not there yet.
    expect_survivals([] { return network("cd cd cc cc", "01 03 23"); }, call(q_node_get_table, 1),
                     call(table_numbers, 2), call(q_node_new_experience_table, 1),
                     call(q_node_new_fading_table, 1), call(q_node_set_cg_intercept, 3, 0, 2.5),
                     call(q_node_set_cg_coefficient, 3, 2, 0, 2.5), call(q_node_set_cg_variance, 3, 0, 2.5),
                     call(q_node_get_cg_intercept, 3, 0));
    expect_survivals([] { return network("dd uo cd", "01"); },
                     call(q_node_set_category, 2, q_category_decision));
    expect_survivals(
        [] {
            owned_domain interval = network("cd");
            q_node_set_subtype(node_at(interval.get(), 0), q_subtype_interval);
            return interval;
        },
        call(q_node_set_state_value, 0, 1, 2.0));
}

}  // namespace
