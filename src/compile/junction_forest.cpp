#include "junction_forest.h"

#include <algorithm>

namespace quarn {

table_size size_of(std::span<node* const> members) noexcept {
    const auto first_continuous = std::ranges::find_if(members, &node::is_continuous);
    const auto discrete = static_cast<std::size_t>(first_continuous - members.begin());
    return {configurations(members.first(discrete)), members.size() - discrete};
}

void junction_forest::table_changed(const node& changed) noexcept {
    if (!is_compiled) return;
    if (changed.has_kind()) {
        of(changed).tree->tables_changed = true;
        for (const compiled_component& normalized : components)
            if (normalized.component == changed.component) normalized.tree->tables_changed = true;
    } else if (changed.is_utility())
        utilities[changed.vertex].tree->tables_changed = true;
}

std::size_t total_size(const junction_tree& tree) noexcept {
    std::size_t total = 0;
    for (const clique* counted : tree.cliques)
        total = saturating_sum(total,
                               saturating_sum(counted->size.configurations, counted->size.continuous_part()));
    return total;
}

junction_forest* triangulated_forest(const domain& asked) noexcept {
    return static_cast<junction_forest*>(asked.compiled.get());
}

junction_forest* forest_of(const domain& compiled) noexcept {
    junction_forest* const forest = triangulated_forest(compiled);
    return forest != nullptr && forest->is_compiled ? forest : nullptr;
}

}  // namespace quarn
