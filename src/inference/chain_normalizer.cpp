// Elimination of the members of a chain component, one at a time: the tables that hold a member are multiplied together,
// and it is summed out.
//
//   Maps     tables over members and parents -> the reciprocal of the sum of their product, for each configuration of the
//            parents
//   Cost     linear in the products of tables that arise; the member with the smallest of them is next
//   Method   all numbers are logarithms, so that neither long products vanish nor those over some configurations of the
//            parents beside those over others; each table but the product is divided by its largest number
#include "chain_normalizer.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "chain_component.h"
#include "errors.h"
#include "table_operations.h"
#include "table_validation.h"

namespace quarn {
namespace {

constexpr double impossible = -std::numeric_limits<double>::infinity();

class member_elimination {
public:
    member_elimination(const chain_component& component, const workers& allowed)
        : domain_(*component.members[0]->domain), workers_(allowed) {
        for (node* member : component.members) holders_[member];
        for (const auto& potential : component.potentials) add_logarithms_of(*potential);
        for (node* member : component.members) add_logarithms_of(*member->own_table);
        for (node* member : component.members) queue_.insert(place_of(*member));
    }

    // Every member, with the product that it is summed out of: the member varies fastest.
    using take_product = std::function<void(std::span<node* const>, number_array&&)>;

    // Writes the logarithms of what is left, and returns that of what it is to be multiplied by.
    double run(table& normalizer, const take_product& take) {
        while (!queue_.empty()) eliminate(*queue_.begin()->member, take);
        std::ranges::fill(normalizer.data, 0.0);
        for (const factor& left : factors_)
            if (!left.logarithms.empty()) multiply(normalizer.nodes, normalizer.data, left);
        return log_scale_;
    }

private:
    struct factor {
        std::vector<node*> nodes;
        number_array logarithms;  // none: it has gone into another one
    };
    // A member, with the size of the product that it is summed out of.
    struct place {
        std::size_t size;
        node* member;
        bool operator<(const place& other) const noexcept {
            return std::pair(size, member->number) < std::pair(other.size, other.member->number);
        }
    };

    void add_logarithms_of(const table& added) {
        factor made{{added.nodes.begin(), added.nodes.end()}, number_array(added.size)};
        std::ranges::transform(added.data, made.logarithms.begin(), [](double p) { return std::log(p); });
        add(std::move(made));
    }

    void add(factor&& added) {
        scale(added.logarithms);
        for (node* member : added.nodes)
            if (const auto held = holders_.find(member); held != holders_.end())
                held->second.push_back(factors_.size());
        factors_.push_back(std::move(added));
    }

    void scale(number_array& logarithms) noexcept {
        const double largest = *std::ranges::max_element(logarithms);
        if (largest == 0 || largest == impossible) return;
        std::ranges::for_each(logarithms, [&](double& number) { number -= largest; });
        log_scale_ += largest;
    }

    // The others in the tables that hold a node.
    std::vector<node*> neighbors_of(node& member) {
        const uint64_t met = domain_.new_mark();
        member.mark = met;
        std::vector<node*> neighbors;
        for (const std::size_t holder : holders_[&member])
            for (node* held : factors_[holder].nodes)
                if (std::exchange(held->mark, met) != met) neighbors.push_back(held);
        return neighbors;
    }

    place place_of(node& member) {
        return {saturating_product(member.state_count, configurations(neighbors_of(member))), &member};
    }

    void multiply(std::span<node* const> nodes, number_array& product, const factor& by) const {
        quarn::add(make_loop_plan(nodes, by.nodes), product.data(), by.logarithms.data(), workers_);
    }

    void eliminate(node& member, const take_product& take) {
        factor message{neighbors_of(member), {}};
        for (node* neighbor : message.nodes)
            if (holders_.contains(neighbor)) queue_.erase(place_of(*neighbor));
        const place eliminated = place_of(member);
        require(eliminated.size != largest_size, q_error_size_too_large);

        std::vector<node*> nodes = message.nodes;
        nodes.push_back(&member);
        number_array product(eliminated.size);
        std::ranges::fill(product, 0.0);
        for (const std::size_t holder : holders_[&member]) {
            multiply(nodes, product, factors_[holder]);
            factors_[holder].logarithms = {};
        }
        message.logarithms = summed_out(make_loop_plan(nodes, message.nodes), product);
        if (take) take(nodes, std::move(product));
        remove(member, eliminated);
        const std::vector<node*> changed = message.nodes;
        add(std::move(message));
        for (node* neighbor : changed)
            if (holders_.contains(neighbor)) queue_.insert(place_of(*neighbor));
    }

    void remove(node& member, const place& eliminated) {
        const std::vector<std::size_t> gone = holders_[&member];
        for (const std::size_t holder : gone)
            for (node* held : factors_[holder].nodes)
                if (const auto found = holders_.find(held); found != holders_.end())
                    std::erase(found->second, holder);
        holders_.erase(&member);
        queue_.erase(eliminated);
    }

    number_array summed_out(const loop_plan& plan, number_array& product) const {
        number_array largest(plan.smaller_size), sums(plan.smaller_size);
        max_marginal(plan, product.data(), largest.data(), workers_);
        std::ranges::transform(largest, sums.begin(), [](double l) { return l > impossible ? -l : 0; });
        quarn::add(plan, product.data(), sums.data(), workers_);
        std::ranges::transform(product, product.begin(), [](double number) { return std::exp(number); });
        sum_marginal(plan, product.data(), sums.data(), workers_);
        std::ranges::transform(sums, largest, largest.begin(),
                               [](double sum, double l) { return std::log(sum) + l; });
        return largest;
    }

    domain& domain_;
    workers workers_;
    std::vector<factor> factors_;
    std::map<const node*, std::vector<std::size_t>> holders_;  // of the members that are left
    std::set<place> queue_;
    double log_scale_ = 0;
};

// The logarithms of the sums go into a table over the parents, but for what is returned.
double eliminate_members(const chain_component& component, table& sums,
                         const member_elimination::take_product& take, const workers& allowed) {
    for (const auto& potential : component.potentials) validate_potential(*potential);
    sums.materialise();
    component.members[0]->domain->number_nodes();
    const double factor = member_elimination(component, allowed).run(sums, take);
    require(std::ranges::all_of(sums.data, [](double logarithm) { return logarithm > impossible; }),
            q_error_chain_graph);
    return factor;
}

}  // namespace

void update_normalizer(compiled_component& updated, const workers& allowed) {
    for (node* member : updated.component->members) validate_distributions(*member);
    updated.log_factor = -eliminate_members(*updated.component, *updated.log_normalizer, {}, allowed);
    for (double& logarithm : updated.log_normalizer->data) logarithm = -logarithm;
}

std::vector<std::unique_ptr<table>> conditional_distributions(const chain_component& component,
                                                              const workers& allowed) {
    for (node* member : component.members) validate_potential(own_table(*member));
    std::vector<std::unique_ptr<table>> distributions;
    const auto keep = [&](std::span<node* const> nodes, number_array&& numbers) {
        distributions.push_back(new_table(table_type::ones, nullptr, nodes));
        distributions.back()->data = std::move(numbers);
    };
    const auto unused = new_table(table_type::ones, nullptr, parents_of(component));
    eliminate_members(component, *unused, keep, allowed);
    std::ranges::reverse(distributions);
    return distributions;
}

}  // namespace quarn
