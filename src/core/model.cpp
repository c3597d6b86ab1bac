// Models, and how they follow changes of their network. With L the product of the state counts of the model nodes before
// a certain one, n its own and R the product of those after it, the expressions are L runs of n slices of R.
#include "model.h"

#include <new>

#include "errors.h"
#include "node.h"
#include "sizes.h"
#include "state_numbers.h"
#include "states.h"
#include "table.h"

namespace quarn {
namespace {

using expressions = std::vector<owned_expression>;

struct runs {
    std::size_t count;   // L
    std::size_t states;  // n
    std::size_t slice;   // R
};

// A node that is no model node counts as one with a single state.
runs runs_of(const model& whole, const node& member) noexcept {
    const std::span<node* const> nodes(whole.nodes.begin(), whole.nodes.size());
    const std::size_t position = whole.nodes.index_of(&member);
    if (position == nodes.size()) return {whole.expressions.size(), 1, 1};
    return {configurations(nodes.first(position)), member.state_count,
            configurations(nodes.subspan(position + 1))};
}

// Moves, in each run, the expressions of `kept` states from `first` on to the first of `count` states.
void move_states(expressions& from, expressions& to, const runs& shape, std::size_t first, std::size_t kept,
                 std::size_t count) noexcept {
    for (std::size_t run = 0; run < shape.count; ++run)
        for (std::size_t i = 0; i < kept * shape.slice; ++i)
            to[run * count * shape.slice + i] =
                std::move(from[(run * shape.states + first) * shape.slice + i]);
}

void keep_states(expressions& changed, const runs& shape, std::size_t first, std::size_t kept) noexcept {
    move_states(changed, changed, shape, first, kept, kept);
    changed.resize(shape.count * kept * shape.slice);
}

// Room for that many expressions; none are there.
expressions no_expressions(std::size_t count) {
    require(count != largest_size, q_error_size_too_large);
    if (count > machine_memory() / sizeof(owned_expression)) throw std::bad_alloc();
    return expressions(count);
}

uint64_t mark_parents(const node& owner) noexcept {
    const uint64_t mark = owner.domain->new_mark();
    for (node* parent : owner.parents) parent->mark = mark;
    return mark;
}

void require_references_to_parents(const node& owner, const expression& tree) {
    const uint64_t mark = mark_parents(owner);
    for (const expression* at = &tree; at != nullptr; at = next_in_tree(*at, tree))
        if (at->is_reference())
            require(at->node->domain == owner.domain && at->node->mark == mark, q_error_invalid_expression);
}

}  // namespace

model& create_model(node& owner, std::span<node* const> nodes) {
    require(!owner.model && !owner.is_continuous());
    const uint64_t mark = mark_parents(owner);
    for (node* listed : nodes) {
        require(listed->domain == owner.domain && listed->mark == mark && listed->is_discrete());
        listed->mark = 0;
    }
    auto created = std::make_unique<model>(owner);
    created->nodes.reserve(nodes.size());
    for (node* listed : nodes) created->nodes.append(listed);
    created->expressions = no_expressions(configurations(nodes));
    owner.model = std::move(created);
    return *owner.model;
}

void delete_model(model& deleted) noexcept { deleted.owner->model.reset(); }

void set_expression(model& changed, std::size_t configuration, expression* added) {
    if (added != nullptr) {
        require_references_to_parents(*changed.owner, *added);
        added->is_in_model = true;
    }
    changed.expressions[configuration].reset(added);
}

std::unique_ptr<model> copy_model(const model& original, node& clone_of_owner) {
    auto copy = std::make_unique<model>(clone_of_owner);
    copy->nodes = original.nodes;
    copy->expressions = no_expressions(original.expressions.size());
    for (std::size_t i = 0; i < original.expressions.size(); ++i) {
        if (!original.expressions[i]) continue;
        copy->expressions[i] = clone(*original.expressions[i]);
        copy->expressions[i]->is_in_model = true;
    }
    copy->samples_per_interval = original.samples_per_interval;
    return copy;
}

prepared_states::prepared_states(model& changed, const node& grown, std::size_t count)
    : model_(&changed), grown_(&grown), count_(count) {
    const runs shape = runs_of(changed, grown);
    longer_ = no_expressions(saturating_product(shape.count, saturating_product(count, shape.slice)));
}

void prepared_states::commit() noexcept {
    const runs shape = runs_of(*model_, *grown_);
    move_states(model_->expressions, longer_, shape, 0, shape.states, count_);
    model_->expressions.swap(longer_);
}

namespace {

void become_number(expression& replaced, double number) noexcept {
    for (expression* argument : replaced.arguments) delete argument;
    replaced.arguments.clear();
    replaced.op = q_operator_number;
    replaced.number = number;
    replaced.node = nullptr;
}

double number_in_state(const node& parent, std::size_t state) {
    if (!parent.has_values()) return 0;
    try {
        return state_number(parent, state);
    } catch (const failure&) {  // invalid state values
        return 0;
    }
}

}  // namespace

bool prepared_removal::yields_label() const noexcept {
    return parent_->is_discrete() && parent_->subtype == q_subtype_label;
}

bool prepared_removal::refers_to_parent(const expression& asked) const noexcept {
    return asked.is_reference() && asked.node == parent_;
}

prepared_removal::prepared_removal(model& changed, const node& parent, std::size_t kept_state)
    : model_(&changed),
      parent_(&parent),
      kept_state_(kept_state),
      number_(number_in_state(parent, kept_state)) {
    if (!yields_label()) return;
    for (const owned_expression& tree : changed.expressions)
        for (const expression* at = tree.get(); at != nullptr; at = next_in_tree(*at, *tree))
            if (refers_to_parent(*at)) labels_.push_back(duplicate_string(state_label(parent, kept_state)));
}

void prepared_removal::commit() noexcept {
    const std::size_t position = model_->nodes.index_of(parent_);
    if (position < model_->nodes.size()) {
        keep_states(model_->expressions, runs_of(*model_, *parent_), kept_state_, 1);
        model_->nodes.erase(position);
    }
    for (const owned_expression& tree : model_->expressions)
        if (tree) replace_references(*tree);
}

void prepared_removal::replace_references(expression& tree) noexcept {
    for (expression* at = &tree; at != nullptr; at = next_in_tree(*at, tree)) {
        const bool is_about_parent = !at->arguments.empty() && refers_to_parent(*at->arguments[0]);
        if (is_about_parent && at->op == q_operator_state_index) {
            become_number(*at, static_cast<double>(kept_state_));
        } else if (is_about_parent && at->op == q_operator_variance) {
            become_number(*at, 0);
        } else if (is_about_parent && at->op == q_operator_quantile) {
            become_number(*at, number_);
        } else if (refers_to_parent(*at) && yields_label()) {
            at->op = q_operator_label;
            at->label = std::move(labels_.back());
            labels_.pop_back();
            at->node = nullptr;
        } else if (refers_to_parent(*at) && parent_->is_discrete() && parent_->subtype == q_subtype_boolean) {
            at->op = q_operator_boolean;
            at->flag = kept_state_ == 1;
            at->node = nullptr;
        } else if (refers_to_parent(*at)) {
            become_number(*at, number_);
        }
    }
}

void drop_states(model& changed, const node& shrunk, std::size_t count) noexcept {
    keep_states(changed.expressions, runs_of(changed, shrunk), 0, count);
}

void permute_states(model& changed, const node& permuted, std::span<const std::size_t> position_of,
                    std::span<owned_expression> scratch) noexcept {
    const runs shape = runs_of(changed, permuted);
    for (std::size_t run = 0; run < shape.count; ++run)
        for (std::size_t offset = 0; offset < shape.slice; ++offset) {
            owned_expression* const first =
                changed.expressions.data() + run * shape.states * shape.slice + offset;
            for (std::size_t state = 0; state < shape.states; ++state)
                scratch[position_of[state]] = std::move(first[state * shape.slice]);
            for (std::size_t state = 0; state < shape.states; ++state)
                first[state * shape.slice] = std::move(scratch[state]);
        }
}

void permute_weights(model& changed, std::span<const std::size_t> position_of,
                     std::span<owned_expression> scratch) noexcept {
    for (const owned_expression& tree : changed.expressions) {
        if (!tree || tree->op != q_operator_distribution || tree->arguments.size() != position_of.size())
            continue;
        for (std::size_t state = 0; state < position_of.size(); ++state)
            scratch[position_of[state]].reset(tree->arguments[state]);
        for (std::size_t state = 0; state < position_of.size(); ++state) {
            scratch[state]->place = state;
            tree->arguments.replace(state, scratch[state].release());
        }
    }
}

void replace_node(model& changed, const node& old_parent, node& new_parent) noexcept {
    const std::size_t position = changed.nodes.index_of(&old_parent);
    if (position < changed.nodes.size()) changed.nodes.replace(position, &new_parent);
    for (const owned_expression& tree : changed.expressions)
        for (expression* at = tree.get(); at != nullptr; at = next_in_tree(*at, *tree))
            if (at->node == &old_parent) at->node = &new_parent;
}

}  // namespace quarn
