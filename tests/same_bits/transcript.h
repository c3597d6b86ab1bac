// All that the library says in the course of a long and varied use of a network, as a text: numbers to the last bit, error
// codes, files and the log, without the times in it. The same use must give the same text, whatever else goes on.
#pragma once
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <quarn.h>

class transcript {
public:
    struct manner {
        unsigned seed = 0;
        std::size_t threads = 1;
        std::string files;  // how the names of the files begin that are written meanwhile
    };
    transcript(const std::string& network, const manner& how)
        : how_(how), random_(how.seed), log_(how.files + ".log") {
        domain_ = q_net_parse_domain(network.c_str(), hear, this);
        tell_result(domain_ != nullptr);
        if (domain_ == nullptr) return;
        for (q_node_t node = q_domain_get_first_node(domain_); node != nullptr; node = q_node_get_next(node))
            nodes_.push_back(node);
        use();
        tell_result(q_domain_delete(domain_));
        tell_file(log_);
    }
    transcript() = default;  // of what is told from outside
    const std::string& text() const { return text_; }

    void tell(const char* string) { (text_ += string) += '\n'; }
    template <class Number>
    requires std::integral<Number> || std::floating_point<Number>
    void tell(Number number) {
        std::array<char, 64> digits;
        char* end = nullptr;
        if constexpr (std::integral<Number>)
            end = std::to_chars(digits.data(), digits.data() + digits.size(), +number).ptr;
        else  // the sign of what is no number has no meaning
            end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                std::isnan(number) ? NAN : number, std::chars_format::hex)
                      .ptr;
        text_.append(digits.data(), end) += '\n';
    }
    static void hear(size_t position, const char* message, void* self) {
        static_cast<transcript*>(self)->tell(position);
        static_cast<transcript*>(self)->tell(message);
    }
    // With the error code that belongs to it.
    template <class Result>
    Result tell_result(Result result) {
        const q_error_t code = q_error_code();
        tell(result);
        tell(code);
        return result;
    }

private:
    void use() {
        tell_result(q_domain_seed_random(domain_, how_.seed));
        tell_result(q_domain_set_log_file(domain_, log_.c_str(), 0));
        tell_net();
        triangulate();
        if (tell_result(q_domain_compile(domain_)) == q_error_none) infer();
        tell_result(q_domain_uncompile(domain_));
        tell_result(q_domain_minimize_limid(domain_));
        sample();
        ask_the_graph();
        tell_net();
    }

    void triangulate() {
        tell_result(q_domain_set_max_separators(domain_, 500));
        for (q_triangulation_method_t method = q_triangulate_clique_size; method <= q_triangulate_best_greedy;
             ++method)
            triangulate(method);
        tell_result(q_domain_uncompile(domain_));
        tell_result(q_domain_set_initial_triangulation(domain_, q_domain_get_elimination_order(domain_)));
        for (auto limit : {q_domain_set_max_separators, q_domain_set_max_separator_size}) {
            tell_result(limit(domain_, 2));
            triangulate(q_triangulate_total_weight);
            tell_result(q_domain_get_max_separators(domain_));
            tell_result(q_domain_get_max_separator_size(domain_));
        }
        std::size_t total = 0;
        for (auto tree = q_domain_get_first_junction_tree(domain_); tree != nullptr;
             tree = q_junction_tree_get_next(tree)) {
            total += q_junction_tree_get_total_size(tree);
            for (auto clique = q_junction_tree_get_cliques(tree); *clique != nullptr; ++clique)
                tell_list(q_clique_get_members(*clique));
        }
        tell(total);
        // Small tables are divided too.
        tell_result(q_domain_set_concurrency_level(domain_, how_.threads));
        tell_result(q_domain_set_grain_size(domain_, 1 + total / 100));
    }

    void triangulate(q_triangulation_method_t method) {
        tell_result(q_domain_uncompile(domain_));
        tell_result(q_domain_triangulate(domain_, method));
        tell_list(q_domain_get_elimination_order(domain_));
    }

    void infer() {
        propagate(q_equilibrium_sum, q_mode_normal);
        sample();
        enter_what_was_drawn();
        for (q_mode_t mode : {q_mode_normal, q_mode_fast_retraction})
            for (q_equilibrium_t equilibrium : {q_equilibrium_max, q_equilibrium_sum})
                propagate(equilibrium, mode);
        const std::string saved = how_.files + ".case";
        tell_result(q_domain_save_case(domain_, saved.c_str()));
        tell_result(q_domain_retract_findings(domain_));
        propagate(q_equilibrium_sum, q_mode_normal);
        tell_result(q_domain_compress(domain_));
        tell_result(q_domain_parse_case(domain_, saved.c_str(), hear, this));
        tell_file(saved);
        propagate(q_equilibrium_sum, q_mode_normal);
        sample();
        tell_result(q_domain_update_policies(domain_));
        tell_result(q_domain_print_beliefs(domain_));
        tell_result(q_domain_retract_findings(domain_));
    }

    void propagate(q_equilibrium_t equilibrium, q_mode_t mode) {
        tell_result(q_domain_propagate(domain_, equilibrium, mode));
        for (q_node_t node : nodes_) {
            tell(q_node_get_name(node));
            for (auto ask : {q_node_get_mean, q_node_get_variance, q_node_get_numeric_mean,
                             q_node_get_numeric_variance, q_node_get_value, q_node_get_utility_variance,
                             q_node_get_utility_minimum, q_node_get_utility_maximum})
                tell_result(ask(node));
            for (std::size_t state = 0; state == 0 || state < states_of(node); ++state)
                for (auto ask : {q_node_get_belief, q_node_get_expected_utility})
                    tell_result(ask(node, state));
        }
        for (auto ask : {q_domain_get_normalization_constant, q_domain_get_log_normalization_constant,
                         q_domain_get_expected_utility})
            tell_result(ask(domain_));
    }

    void sample() {
        for (int times = 0; times < 5; ++times) {
            tell_result(q_domain_simulate(domain_));
            for (q_node_t node : nodes_) {
                tell_result(q_node_get_sampled_state(node));
                tell_result(q_node_get_sampled_value(node));
                tell_result(q_node_get_sampled_utility(node));
            }
            tell_result(q_domain_get_sampled_log_probability(domain_));
        }
        tell_result(q_domain_get_normal_random(domain_, 1, 2));
    }

    void enter_what_was_drawn() {
        for (q_node_t node : nodes_) {
            if (random_() % 4 != 0) continue;
            const int64_t drawn = q_node_get_sampled_state(node);
            const double value = q_node_get_sampled_value(node);
            if (drawn < 0)
                tell_result(q_node_enter_value(node, value));
            else if (random_() % 2 == 0)
                tell_result(q_node_select_state(node, std::size_t(drawn)));
            else
                tell_result(q_node_enter_finding(node, std::size_t(drawn), 3.7));
        }
    }

    void ask_the_graph() {
        for (int times = 0; times < 5; ++times) {
            std::array<std::vector<q_node_t>, 3> lists;
            for (q_node_t node : nodes_) lists[std::min(random_() % 8, 2ul)].push_back(node);
            lists[2].resize(std::min(lists[2].size(), std::size_t{1}));
            for (auto& list : lists) list.push_back(nullptr);
            for (auto ask : {q_domain_get_d_connected_nodes, q_domain_get_d_separated_nodes})
                tell_list(ask(domain_, lists[0].data(), lists[1].data(), lists[2].data()));
        }
    }

    std::size_t states_of(q_node_t node) const {
        return q_node_get_kind(node) == q_kind_discrete ? q_node_get_number_of_states(node) : 0;
    }

    void tell_list(const q_node_t* list) {
        tell_result(list != nullptr);
        for (; list != nullptr && *list != nullptr; ++list) tell(q_node_get_name(*list));
    }
    void tell_net() {
        char* const net = q_domain_to_net(domain_);
        tell_result(net != nullptr);
        if (net != nullptr) tell(net);
        q_string_delete(net);
    }
    void tell_file(const std::string& path) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);)
            if (!is_time(line)) tell(line.c_str());
        file.close();
        std::remove(path.c_str());
    }
    // Such as "Sun Nov 22 05:37:02 2026".
    static bool is_time(const std::string& line) {
        return line.size() == 24 && line[13] == ':' && line[16] == ':';
    }
    manner how_;
    std::mt19937 random_;
    std::string log_;
    q_domain_t domain_ = nullptr;
    std::vector<q_node_t> nodes_;
    std::string text_;
};
