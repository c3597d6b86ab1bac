#include "junction_forest.h"

#include "compile_log.h"
#include "errors.h"
#include "forest_construction.h"
#include "moral_graph.h"
#include "sizes.h"
#include "triangulation.h"

namespace quarn {

void junction_forest::table_changed(const node& changed) noexcept {
    if (changed.has_kind()) tree_of(changed).tables_changed = true;
}

std::size_t total_size(const junction_tree& tree) noexcept {
    std::size_t total = 0;
    for (const clique* counted : tree.cliques) total = saturating_sum(total, counted->size);
    return total;
}

junction_forest* forest_of(const domain& compiled) noexcept {
    return static_cast<junction_forest*>(compiled.compiled.get());
}

void compile(domain& compiled) {
    require(compiled.counts.discrete > 0 && compiled.counts.discrete == compiled.node_count);
    require(compiled.counts.of_category(q_category_chance) == compiled.node_count);
    require(compiled.compiled == nullptr);
    log_time(compiled.log);
    const graph moral = make_moral_graph(compiled);
    auto forest = make_junction_forest(compiled, triangulate(moral));
    compiled.log.flush();
    compiled.compiled = std::move(forest);
}

}  // namespace quarn
