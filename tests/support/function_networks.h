// Random networks with functions, through random changes. Beliefs are compared with enumeration, where a discrete function
// is a node with a state of its own, and values with recursion, for the numbers that the library tells of the parents. All
// these equations hold at once, so each function has been computed after all that it depends on.
#pragma once
#include <map>
#include <set>

#include "expression_trees.h"
#include "function_meanings.h"
#include "model.h"

struct function_network : model {
    std::vector<q_node_t> functions;  // the discrete ones are among the nodes too
    std::set<q_error_t> codes;        // that functions gave
    std::size_t values = 0, selections = 0;

    function_network(unsigned the_seed, const kind& the_kind)
        : model(the_seed, the_kind, made(the_seed, the_kind)) {
        for (std::size_t node = 0; node < nodes.size(); ++node)
            if (is_discrete(node)) set_up_states(node);
        for (std::size_t count = 2 + random() % 4; count > 0; --count) add_function();
        for (int i = 0; i < 20; ++i) add_link();
        if (!q_domain_is_compiled(domain)) compile();
        for (q_node_t function : functions) change_model(function);
    }
    static oracle::network made(unsigned seed, const kind& of) {
        std::mt19937 random(seed);
        oracle::network made = oracle::random_network(random, {1 + seed % 5, 3, 2, seed % 2 == 0, of.roles});
        for (variable& v : made)
            for (auto& equation : v.equations) equation.front() = std::max(equation.front(), 0.25);
        return made;
    }

    void set_up_states(std::size_t node) {
        const q_subtype_t subtypes[] = {q_subtype_label, q_subtype_number, q_subtype_interval,
                                        q_subtype_boolean};
        q_node_set_subtype(nodes[node], subtypes[random() % (reference[node].states == 2 ? 4 : 3)]);
        for (std::size_t s = 0; s < reference[node].states; ++s)
            q_node_set_state_label(nodes[node], s, ("label " + std::to_string(s)).c_str());
        set_values(nodes[node]);
    }
    void set_values(q_node_t node) {
        if (!meanings::has_numbers(node)) return;
        const std::size_t count =
            q_node_get_number_of_states(node) + (q_node_get_subtype(node) == q_subtype_interval);
        double value = double(random() % 9) / 2 - 3;
        for (std::size_t i = 0; i < count; value += double(1 + random() % 3) / 2, ++i) {
            const bool infinite = random() % 8 == 0 && q_node_get_subtype(node) == q_subtype_interval;
            q_node_set_state_value(node, i, infinite ? (i == 0 ? -HUGE_VAL : HUGE_VAL) : value);
        }
    }

    void add_function() {
        const bool real = random() % 2 == 0;
        functions.push_back(new_node(domain, real ? "fo" : "fd"));
        if (real) return;
        const std::size_t node = nodes.size();
        nodes.push_back(functions.back());
        reference.emplace_back().states = 1 + random() % 3;
        q_node_set_number_of_states(nodes[node], reference[node].states);
        set_up_states(node);
        oracle::randomize_table(random, reference, node, with_zeros);
        write_table(node);
    }
    q_node_t any_node() {
        const std::size_t i = random() % (nodes.size() + functions.size());
        return i < nodes.size() ? nodes[i] : functions[i - nodes.size()];
    }
    q_node_t any_function() { return functions[random() % functions.size()]; }

    // From or to a function, where that is allowed.
    void add_link() {
        q_node_t parent = any_node(), child = any_function();
        if (random() % 3 == 0) std::swap(parent, child);
        if (q_node_add_parent(child, parent) != q_error_none) return;
        const auto from = std::ranges::find(nodes, parent), to = std::ranges::find(nodes, child);
        if (q_node_get_category(child) == q_category_function || from == nodes.end()) return;
        const auto node = std::size_t(to - nodes.begin());
        reference[node].parents.insert(reference[node].parents.begin(), std::size_t(from - nodes.begin()));
        oracle::randomize_table(random, reference, node, with_zeros && is_discrete(node));
        write_table(node);
    }

    q_expression_t selecting(q_node_t function) {
        const auto state = random() % q_node_get_number_of_states(function);
        const meanings::outcome wanted = meanings::in_state(function, double(state));
        if (const bool* truth = std::get_if<bool>(&wanted.value)) return boolean(*truth);
        if (const auto* text = std::get_if<std::string>(&wanted.value)) return label(text->c_str());
        return number(std::get<double>(wanted.value));
    }
    q_expression_t new_expression(q_node_t function) {
        tree_generator generate(random, listed(q_node_get_parents(function)));
        const bool real = meanings::is_real_function(function);
        if (!real && random() % 4 > 0) {
            const q_expression_t condition = generate.make(yields::boolean, 3);
            return composite(q_operator_if, {condition, selecting(function), selecting(function)});
        }
        const auto subtype = std::size_t(q_node_get_subtype(function) - q_subtype_label);
        const yields types[] = {yields::label, yields::boolean, yields::number, yields::number};
        return generate.make(real ? yields::number : types[subtype], 1 + int(random() % 5));
    }
    void change_model(q_node_t function) {
        q_model_t held = q_node_get_model(function);
        if (held == nullptr || random() % 3 == 0) {
            if (held != nullptr) q_model_delete(held);
            if (random() % 8 == 0) return;
            std::vector<q_node_t> by;
            for (q_node_t parent : listed(q_node_get_parents(function)))
                if (q_node_get_kind(parent) == q_kind_discrete && random() % 4 == 0) by.push_back(parent);
            by.push_back(nullptr);
            held = q_node_new_model(function, by.data());
        }
        for (std::size_t i = 0; i < q_model_get_size(held); ++i)
            if (random() % 8 > 0) {
                EXPECT_EQ(q_model_set_expression(held, i, new_expression(function)), q_error_none);
            }
    }

    void update_policies() {
        if (q_domain_update_policies(domain) != q_error_none) return;
        for (std::size_t node = 0; node < nodes.size(); ++node)
            if (reference[node].is == role::decision)
                reference[node].table = data_of(q_node_get_table(nodes[node]));
        for (q_node_t function : functions) expect_function(function);
    }

    void change() {
        if (random() % 6 == 0) update_policies();
        for (std::size_t changes = random() % 3; changes > 0; --changes) change_evidence();
        const std::size_t choice = random() % 12;
        const q_node_t function = any_function();
        const auto parents = listed(q_node_get_parents(function));
        if (choice < 2) start_again();
        if (choice == 2) set_values(nodes[random() % nodes.size()]);
        if (choice < 5) change_model(function);
        if (choice == 5) q_node_add_parent(function, any_node());
        if (choice == 6 && !parents.empty())
            q_node_remove_parent(function, parents[random() % parents.size()]);
        if (!q_domain_is_compiled(domain)) compile();
    }

    // The whole domain; or tree by tree, as often as there may be trees that wait for each other.
    q_status_t propagate_all() {
        if (random() % 3 > 0) return q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
        std::vector<q_junction_tree_t> all = trees();
        std::ranges::shuffle(all, random);
        q_status_t status = q_error_none;
        for (std::size_t round = 0; round <= all.size(); ++round) {
            status = q_error_none;
            for (q_junction_tree_t tree : all) {
                const q_status_t own = q_junction_tree_propagate(tree, q_equilibrium_sum, q_mode_normal);
                if (status == q_error_none || own == q_error_inconsistency_or_underflow) status = own;
            }
        }
        return status;
    }

    // What a function yields must be what it has or has selected. Returns the code of one that has no table to select in.
    q_error_t expect_function(q_node_t function) {
        const meanings::outcome expected = meanings::of_function(function);
        codes.insert(expected.code);
        if (meanings::is_real_function(function)) {
            const meanings::outcome found = meanings::told(q_node_get_value(function));
            EXPECT_EQ(found.code, expected.code);
            if (expected.code != q_error_none) return q_error_none;
            const double value = std::get<double>(expected.value);
            EXPECT_NEAR(std::get<double>(found.value), value, 1e-9 * std::abs(value));
            ++values;
        } else if (q_node_get_model(function) != nullptr) {
            if (expected.code != q_error_none) return expected.code;
            variable& v = reference[std::size_t(std::ranges::find(nodes, function) - nodes.begin())];
            v.table.assign(v.states, 0.0);
            v.table[std::size_t(std::get<double>(expected.value))] = 1;
            ++selections;
        }
        return q_error_none;
    }

    static variable certain() {
        variable made;
        made.table = {1};
        return made;
    }
    void expect_equations(q_status_t status) {
        std::map<q_junction_tree_t, q_error_t> failed;
        std::set<q_status_t> acceptable;
        for (q_node_t function : functions)
            if (const q_error_t code = expect_function(function)) {
                failed[q_node_get_junction_tree(function)] = code;
                acceptable.insert(code);
            }
        std::vector<std::pair<q_junction_tree_t, answers>> ready;
        for (q_junction_tree_t tree : trees()) {
            const bool has_results = q_junction_tree_evidence_mode_is(tree, q_mode_normal) <= 1;
            EXPECT_TRUE(!failed.contains(tree) || !has_results);
            if (failed.contains(tree)) continue;
            oracle::network alone = reference;
            for (std::size_t node = 0; node < nodes.size(); ++node)
                if (tree_of(node) != tree && tree_of(node) != nullptr) alone[node] = certain();
            ready.emplace_back(tree, oracle::enumerate(alone));
            if (ready.back().second.log_probability == -INFINITY)
                acceptable = {q_error_inconsistency_or_underflow};
        }
        if (acceptable.empty()) acceptable = {q_error_none};
        EXPECT_THAT(acceptable, testing::Contains(status));
        if (status == q_error_inconsistency_or_underflow) return;
        for (const auto& [tree, expected] : ready) expect_results(expected, {}, tree);
        if (status == q_error_none) expect_results(oracle::enumerate(reference), {});
        successes += status == q_error_none;
    }

    void run(int steps) {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            if (is_invalid()) {
                EXPECT_EQ(q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal),
                          q_error_invalid_evidence);
                start_again();
            }
            expect_equations(propagate_all());
            change();
        }
    }
};
