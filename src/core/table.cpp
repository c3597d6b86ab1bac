#include "table.h"

#include <algorithm>

#include "errors.h"
#include "node.h"

using namespace quarn;

std::size_t q_table::continuous_position(const q_node* node) const noexcept {
    const std::size_t position = nodes.index_of(node);
    return position < discrete_count ? continuous_count() : position - discrete_count;
}

void q_table::materialise() {
    if (is_materialised()) return;
    require(size != largest_size && cg_size() != largest_size, q_error_size_too_large);
    number_array values(size);
    number_array blocks(cg_size());
    const bool starts_with_ones = type == table_type::probability || type == table_type::ones;
    std::ranges::fill(values, starts_with_ones ? 1.0 : 0.0);
    std::ranges::fill(blocks, 0.0);
    if (type == table_type::probability && owner != nullptr && owner->is_continuous())
        for (std::size_t block = 0; block < blocks.size(); block += block_size())
            blocks[block + cg_variance] = 1;
    data = std::move(values);
    moments = std::move(blocks);
}

namespace quarn {

std::size_t configurations(std::span<node* const> discrete_nodes) noexcept {
    std::size_t product = 1;
    for (const node* factor : discrete_nodes) product = saturating_product(product, factor->state_count);
    return product;
}

std::unique_ptr<table> new_table(table_type type, node* owner, std::span<node* const> nodes) {
    auto created = std::make_unique<table>(type, owner);
    created->nodes.reserve(nodes.size());
    for (node* member : nodes) created->nodes.append(member);
    created->discrete_count = static_cast<std::size_t>(
        std::ranges::count_if(nodes, [](const node* n) { return n->is_discrete(); }));
    created->size = configurations(nodes.first(created->discrete_count));
    created->roles.assign(created->continuous_count(),
                          type == table_type::probability ? cg_role::unknown : cg_role::head);
    return created;
}

namespace {

void append_parents(std::vector<node*>& nodes, const node& child, q_kind_t kind) {
    std::ranges::copy_if(child.parents, std::back_inserter(nodes),
                         [&](const node* p) { return p->kind == kind; });
}

std::unique_ptr<table> new_own_table(node& owner) {
    std::vector<node*> nodes;
    if (!owner.is_function()) append_parents(nodes, owner, q_kind_discrete);
    if (owner.has_kind()) nodes.push_back(&owner);
    if (owner.is_continuous()) append_parents(nodes, owner, q_kind_continuous);
    auto created =
        new_table(owner.is_utility() ? table_type::utility : table_type::probability, &owner, nodes);
    std::ranges::fill(created->roles, cg_role::tail);
    if (owner.is_continuous()) created->roles.front() = cg_role::head;
    return created;
}

}  // namespace

table& own_table(node& owner) {
    if (!owner.own_table) owner.own_table = new_own_table(owner);
    return *owner.own_table;
}

std::unique_ptr<table> new_parent_table(table_type type, node& owner) {
    std::vector<node*> nodes;
    append_parents(nodes, owner, q_kind_discrete);
    return new_table(type, &owner, nodes);
}

std::unique_ptr<table> copy_table(const table& source) {
    auto copy = std::make_unique<table>(source.type, source.owner);
    copy->nodes = source.nodes;
    copy->discrete_count = source.discrete_count;
    copy->size = source.size;
    copy->data = source.data.copy();
    copy->moments = source.moments.copy();
    copy->roles = source.roles;
    return copy;
}

namespace {

std::size_t cg_entry(const table& parameters, cg_term term, const node* parent) {
    if (term == cg_term::intercept) return cg_intercept;
    if (term == cg_term::variance) return cg_variance;
    const std::size_t k = parameters.continuous_position(parent);
    require(k >= 1 && k < parameters.continuous_count());
    return cg_coefficient(k);
}

}  // namespace

double& cg_parameter(node& owner, std::size_t configuration, cg_term term, const node* parent) {
    std::unique_ptr<table> made = owner.own_table ? nullptr : new_own_table(owner);
    table& parameters = made ? *made : *owner.own_table;
    const std::size_t entry = cg_entry(parameters, term, parent);
    require(configuration < parameters.size);
    parameters.materialise();
    if (made) owner.own_table = std::move(made);
    return parameters.moments[configuration * parameters.block_size() + entry];
}

}  // namespace quarn
