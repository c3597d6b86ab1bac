#include "forward_sampling.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <unordered_map>
#include <utility>

#include "chain_component.h"
#include "chain_normalizer.h"
#include "errors.h"
#include "two_ended_choice.h"

namespace quarn {
namespace {

bool is_made(const node& asked) noexcept {
    return asked.is(q_category_decision) && asked.evidence.index >= 0;
}

std::vector<node*> with_kind(std::span<node* const> nodes) {
    std::vector<node*> found;
    std::ranges::copy_if(nodes, std::back_inserter(found), [](const node* n) { return n->has_kind(); });
    return found;
}

// What must be drawn before a node, or before the component that it is in.
std::vector<node*> drawn_before(const node& asked) {
    if (asked.component != nullptr) return with_kind(parents_of(*asked.component));
    return asked.is_function() ? std::vector<node*>{} : with_kind(asked.parents);
}

double drawable_sum(std::span<const double> row) {
    double sum = 0;
    for (const double weight : row) {
        require(weight >= 0, q_error_invalid_probability_potential);
        sum += weight;
    }
    require(sum > 0 && sum <= std::numeric_limits<double>::max(), q_error_invalid_probability_potential);
    return sum;
}

class forward_sampler final : public sampler {
public:
    explicit forward_sampler(domain& sampled) : domain_(sampled) {
        drawn_.reserve(sampled.node_count);
        for (node* next = sampled.oldest; next != nullptr; next = next->newer)
            if (next->has_kind()) add_from(*next);
        place_of_.clear();
    }

    double draw(random_generator& generator) override {
        require(std::ranges::all_of(drawn_, [](const drawn_node& n) { return may_be_drawn(*n.owner); }));
        for (component_tables& component : components_) component.refresh(domain_.workers);
        log_product probability;
        for (std::size_t place = 0; place < steps_.size(); ++place) {
            drawn_node& drawn = drawn_[place];
            if (drawn.owner->is_continuous())
                draw_value(steps_[place], drawn, generator);
            else if (is_made(*drawn.owner))
                drawn.state = static_cast<std::size_t>(drawn.owner->evidence.index);
            else
                draw_state(steps_[place], drawn, generator, probability);
        }
        return probability.value();
    }

private:
    static constexpr std::size_t not_yet = static_cast<std::size_t>(-1);

    // The tables that the members of a component are drawn from, which are not their own.
    struct component_tables {
        const chain_component* component;
        std::vector<std::unique_ptr<table>> tables = {};
        std::vector<std::vector<double>> made_from = {};  // the own tables of the members

        bool is_current() const {
            for (std::size_t i = 0; i < made_from.size(); ++i)
                if (!std::ranges::equal(own_table(*component->members[i]).data, made_from[i])) return false;
            return !made_from.empty();
        }
        void refresh(const workers& allowed) {
            if (is_current()) return;
            auto made = conditional_distributions(*component, allowed);
            std::vector<std::vector<double>> from;
            for (node* member : component->members) {
                const number_array& numbers = own_table(*member).data;
                from.emplace_back(numbers.begin(), numbers.end());
            }
            tables = std::move(made);
            made_from = std::move(from);
        }
    };

    // How far a step in the state of a parent leads in the table; of a continuous parent, where its coefficient is.
    struct parent_place {
        std::size_t place;
        std::size_t distance;
    };
    struct step {
        std::size_t component = not_yet;  // among components_; none: the node has a table of its own
        std::size_t number = 0;           // among the tables of that component
        std::vector<parent_place> discrete = {};
        std::vector<parent_place> continuous = {};
    };

    static bool may_be_drawn(const node& asked) noexcept {
        if (asked.is_continuous()) return !asked.value_is_entered;
        return asked.evidence.index == findings::none || is_made(asked);
    }

    // Depth first, without recursion.
    void add_from(node& start) {
        struct visit {
            node* visited;
            std::vector<node*> before;
            std::size_t next = 0;
        };
        std::vector<visit> open;
        const auto enter = [&](node& entered) {
            if (!place_of_.emplace(&entered, not_yet).second) return;
            if (entered.component != nullptr)
                for (const node* member : entered.component->members) place_of_.emplace(member, not_yet);
            open.push_back({&entered, drawn_before(entered)});
        };
        enter(start);
        while (!open.empty()) {
            visit& last = open.back();
            if (last.next < last.before.size()) {
                enter(*last.before[last.next++]);
            } else {
                add(*last.visited);
                open.pop_back();
            }
        }
    }

    void add(node& added) {
        if (added.component == nullptr) return add_step(added, own_table(added), {});
        component_tables tables{added.component};
        tables.refresh(domain_.workers);
        for (std::size_t number = 0; number < tables.tables.size(); ++number) {
            const table& of_member = *tables.tables[number];
            add_step(*of_member.nodes[of_member.nodes.size() - 1], of_member, {components_.size(), number});
        }
        components_.push_back(std::move(tables));
    }

    void add_step(node& added, const table& from, step made) {
        place_of_[&added] = steps_.size();
        std::size_t distance = 1;
        for (std::size_t i = from.discrete_count; i-- > 0; distance *= from.nodes[i]->state_count)
            if (from.nodes[i] != &added) made.discrete.push_back({place_of_.at(from.nodes[i]), distance});
        for (std::size_t k = 1; k < from.continuous_count(); ++k)
            made.continuous.push_back({place_of_.at(from.nodes[from.discrete_count + k]), cg_coefficient(k)});
        steps_.push_back(std::move(made));
        drawn_.push_back({&added});
    }

    std::size_t configuration(const step& of) const noexcept {
        std::size_t sum = 0;
        for (const parent_place& parent : of.discrete) sum += drawn_[parent.place].state * parent.distance;
        return sum;
    }

    void draw_state(const step& drawing, drawn_node& drawn, random_generator& generator,
                    log_product& probability) {
        table& from = drawing.component == not_yet ? own_table(*drawn.owner)
                                                   : *components_[drawing.component].tables[drawing.number];
        from.materialise();
        const auto row = from.data.span().subspan(configuration(drawing), drawn.owner->state_count);
        const double sum = drawable_sum(row);
        drawn.state = choose(row, sum, generator);
        probability.multiply(row[drawn.state] / sum);
    }

    void draw_value(const step& drawing, drawn_node& drawn, random_generator& generator) {
        table& from = own_table(*drawn.owner);
        from.materialise();
        const double* const block = from.moments.data() + configuration(drawing) * from.block_size();
        double mean = block[cg_intercept];
        bool is_finite = std::isfinite(mean);
        for (const parent_place& parent : drawing.continuous) {
            is_finite &= std::isfinite(block[parent.distance]);
            mean += block[parent.distance] * drawn_[parent.place].value;
        }
        const double variance = block[cg_variance];
        require(is_finite && variance >= 0 && std::isfinite(variance), q_error_invalid_probability_potential);
        drawn.value = generator.normal(mean, variance);
    }

    domain& domain_;
    std::vector<step> steps_;  // one for each node, in the order of drawn_
    std::vector<component_tables> components_;
    std::unordered_map<const node*, std::size_t> place_of_;  // among the steps, while these are added
};

}  // namespace

std::unique_ptr<sampler> new_forward_sampler(domain& sampled) {
    return std::make_unique<forward_sampler>(sampled);
}

}  // namespace quarn
