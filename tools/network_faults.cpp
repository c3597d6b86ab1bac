#include "network_faults.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <deque>
#include <limits>
#include <numeric>
#include <span>
#include <unordered_map>

#include "model.h"
#include "potential_data.h"
#include "table_fault.h"

namespace tool {
namespace {

constexpr double tolerance = 1e-6;

std::string begin_of(q_node_t node) { return std::string("node ") + q_node_get_name(node) + ": "; }

bool is_discrete(q_node_t node) { return q_node_get_kind(node) == q_kind_discrete; }
bool is_function(q_node_t node) { return q_node_get_category(node) == q_category_function; }

// Whether the numbers in the table are to be distributions that the model itself makes no others of.
bool has_probabilities(q_node_t node) {
    return is_discrete(node) && q_node_get_category(node) == q_category_chance &&
           q_node_get_model(node) == nullptr;
}

std::span<const double> numbers_of(q_node_t node) {
    const q_table_t table = q_node_get_table(node);
    const double* const numbers = q_table_get_data(table);
    return {numbers, numbers == nullptr ? 0 : q_table_get_size(table)};
}

std::string text_of(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.8g", number);
    return text.data();
}

void find_sums(q_node_t node, std::vector<std::string>& found) {
    const std::span<const double> numbers = numbers_of(node);
    const size_t states = q_node_get_number_of_states(node), rows = numbers.size() / states;
    for (size_t row = 0; row < rows; ++row) {
        const auto distribution = numbers.subspan(row * states, states);
        const double sum = std::accumulate(distribution.begin(), distribution.end(), 0.0);
        if (sum > 0 && std::isfinite(sum) && std::abs(sum - 1) > tolerance)
            found.push_back(begin_of(node) + "the probabilities" +
                            condition_of(conditioning_nodes(node), row, rows) + " sum to " + text_of(sum));
    }
}

// Which states of discrete nodes can occur, as far as the table of each node alone tells, given those of its parents.
class possible_states {
public:
    explicit possible_states(const std::vector<q_node_t>& nodes) {
        for (const q_node_t node : nodes)
            if (is_discrete(node)) possible_[node].assign(q_node_get_number_of_states(node), true);
        changed_.assign(nodes.begin(), nodes.end());
        for (; !changed_.empty(); changed_.pop_front())
            if (has_probabilities(changed_.front())) look_at(changed_.front());
    }
    const std::vector<bool>& of(q_node_t node) const { return possible_.at(node); }

private:
    void look_at(q_node_t node) {
        const std::vector<q_node_t> parents = conditioning_nodes(node);
        const std::span<const double> numbers = numbers_of(node);
        if (numbers.empty()) return;
        const size_t states = q_node_get_number_of_states(node);
        std::vector<bool> reached(states, false);
        for (size_t row = 0; row < numbers.size() / states; ++row) {
            if (!can_occur(parents, row)) continue;
            for (size_t state = 0; state < states; ++state)
                if (numbers[row * states + state] != 0) reached[state] = true;
        }
        if (reached == possible_[node]) return;
        possible_[node] = std::move(reached);
        for (const q_node_t* child = q_node_get_children(node); *child != nullptr; ++child)
            changed_.push_back(*child);
    }
    bool can_occur(const std::vector<q_node_t>& parents, size_t row) const {
        for (auto parent = parents.rbegin(); parent != parents.rend(); ++parent) {
            const std::vector<bool>& possible = possible_.at(*parent);
            if (!possible[row % possible.size()]) return false;
            row /= possible.size();
        }
        return true;
    }

    std::unordered_map<q_node_t, std::vector<bool>> possible_;
    std::deque<q_node_t> changed_;
};

void find_impossible(q_node_t node, const std::vector<bool>& possible, std::vector<std::string>& found) {
    if (std::ranges::count(possible, true) == 0) return;  // there is something worse
    const std::vector<std::string> names = state_names(node);
    for (size_t state = 0; state < possible.size(); ++state)
        if (!possible[state]) found.push_back(begin_of(node) + "state " + names[state] + " cannot occur");
}

// The numbers of shared potentials cannot be read, but what propagation makes of them.
bool shares_unusable_potentials(q_domain_t domain) {
    if (q_domain_compile(domain) != q_error_none ||
        q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal) == q_error_none)
        return false;
    return q_error_code() == q_error_invalid_probability_potential || q_error_code() == q_error_chain_graph;
}

}  // namespace

std::vector<std::string> find_network_faults(q_domain_t domain) {
    std::vector<q_node_t> nodes;
    for (q_node_t node = q_domain_get_first_node(domain); node != nullptr; node = q_node_get_next(node))
        nodes.push_back(node);
    std::ranges::reverse(nodes);

    const described_nodes described = find_described(domain);
    const possible_states possible(nodes);
    std::vector<std::string> found;
    for (const q_node_t node : nodes) {
        const std::string name = q_node_get_name(node);
        const bool is_missing = described && !described->contains(name);
        if (q_node_get_kind(node) == q_kind_other && is_function(node) && q_node_get_model(node) == nullptr)
            found.push_back(begin_of(node) + "the function has no model");
        else if (is_missing && needs_data(node))
            found.push_back(begin_of(node) + "there are no potential data");
        const std::vector<std::string> faults = table_faults(node, std::numeric_limits<size_t>::max());
        found.insert(found.end(), faults.begin(), faults.end());
        if (!has_probabilities(node)) continue;
        if (described && !is_missing && !described->at(name)) find_sums(node, found);
        find_impossible(node, possible.of(node), found);
    }
    const bool is_shared =
        described && std::ranges::any_of(*described, [](const auto& entry) { return entry.second; });
    if (is_shared && found.empty() && shares_unusable_potentials(domain))
        found.emplace_back("a potential of several nodes has negative numbers or leaves no state possible");
    return found;
}

}  // namespace tool
