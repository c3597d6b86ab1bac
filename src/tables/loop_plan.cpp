#include "loop_plan.h"

#include <algorithm>
#include <utility>

#include "sizes.h"

namespace quarn {
namespace {

constexpr std::size_t long_run = 8;    // from this many entries on a run keeps a kernel busy
constexpr std::size_t full_tile = 64;  // entries after which a list of positions takes in no further level

// Moves levels from the list of a plan into its tile.
class tile_choice {
public:
    explicit tile_choice(loop_plan& plan) : levels_(plan.outer), tile_(plan.tile) {}

    void make() {
        if (levels_.empty()) return list();
        const loop_level innermost = levels_.back();
        const loop_level next = levels_.size() > 1 ? levels_.end()[-2] : loop_level{1, 0, 0};
        const bool listable = innermost.count < long_run && innermost.count * next.count <= largest_list;
        if (listable) return list();
        if (!innermost.kept()) {
            tile_.kind = tile_kind::rows;
            tile_.removed = take_last();
            if (next.kept()) tile_.kept = take_last();
        } else if (innermost.smaller == 1 || !next.kept()) {
            tile_.kind = tile_kind::columns;
            tile_.kept = take_last();
            if (next.count > 1 && !next.kept()) tile_.removed = take_last();
        } else {
            tile_.kind = tile_kind::crossed;
            tile_.kept = take_last();
            if (const auto contiguous = finest_of_smaller(); contiguous != levels_.end()) {
                tile_.removed = *contiguous;
                levels_.erase(contiguous);
            }
        }
    }

private:
    loop_level take_last() {
        const loop_level taken = levels_.back();
        levels_.pop_back();
        return taken;
    }

    loop_levels::iterator innermost() { return levels_.empty() ? levels_.end() : levels_.end() - 1; }

    // The kept level with the smallest step in the smaller table.
    loop_levels::iterator finest_of_smaller() {
        auto finest = levels_.end();
        for (auto level = levels_.begin(); level != levels_.end(); ++level)
            if (level->kept() && (finest == levels_.end() || level->smaller < finest->smaller))
                finest = level;
        return finest;
    }

    // From the inside out, and with each level also the one in which the smaller table moves least, so that both tables
    // are used by whole cache lines. Of the removed levels always the innermost ones, so that their order stays.
    void list() {
        loop_levels listed;
        std::size_t entries = 1;
        const auto take = [&](loop_levels::iterator level) {
            if (level == levels_.end() || entries >= full_tile || entries * level->count > largest_list)
                return false;
            entries *= level->count;
            listed.push_back(*level);
            levels_.erase(level);
            return true;
        };
        while (take(innermost()))
            if (finest_of_smaller() != innermost()) take(finest_of_smaller());

        tile_.kind = tile_kind::scattered;
        tile_.kept_positions = {{0, 0}};
        tile_.removed_positions = {0};
        for (auto level = listed.rbegin(); level != listed.rend(); ++level) {
            if (level->kept())
                tile_.kept_positions = extended(tile_.kept_positions, *level);
            else
                tile_.removed_positions = extended(tile_.removed_positions, *level);
        }
        tile_.kept.count = tile_.kept_positions.size();
        tile_.removed.count = tile_.removed_positions.size();
    }

    static std::vector<tile_position> extended(const std::vector<tile_position>& outer,
                                               const loop_level& level) {
        std::vector<tile_position> all;
        all.reserve(outer.size() * level.count);
        for (const tile_position& from : outer)
            for (std::size_t step = 0; step < level.count; ++step)
                all.push_back({from.larger + step * level.larger, from.smaller + step * level.smaller});
        return all;
    }

    static std::vector<std::size_t> extended(const std::vector<std::size_t>& outer, const loop_level& level) {
        std::vector<std::size_t> all;
        all.reserve(outer.size() * level.count);
        for (const std::size_t from : outer)
            for (std::size_t step = 0; step < level.count; ++step) all.push_back(from + step * level.larger);
        return all;
    }

    loop_levels& levels_;
    loop_tile& tile_;
};

// Merges neighbours among the kept levels, and the innermost removed ones as long as the products of the weights of
// their states can be listed.
void compress_weighted(loop_levels& levels) {
    loop_levels merged;
    bool innermost_removed = true;
    for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
        const bool joins =
            !merged.empty() && can_merge(*level, merged.back()) &&
            (level->kept() || (innermost_removed && level->count * merged.back().count <= largest_list));
        if (joins) {
            merged.back().count *= level->count;
            continue;
        }
        if (!merged.empty() && !merged.back().kept()) innermost_removed = false;
        merged.push_back(*level);
    }
    levels.assign(merged.rbegin(), merged.rend());
}

// Takes removed levels that were merged apart again.
void give_nodes_levels(loop_levels& levels, std::span<const removed_node> nodes) {
    loop_levels separate;
    auto of = nodes.begin();
    for (const loop_level& level : levels) {
        if (level.kept()) separate.push_back(level);
        for (std::size_t left = level.kept() ? 1 : level.count; left > 1; ++of) {
            left /= of->states;
            separate.push_back({of->states, level.larger * left, 0});
        }
    }
    levels = std::move(separate);
}

}  // namespace

loop_plan make_loop_plan(std::span<node* const> nodes, std::span<node* const> smaller,
                         std::span<const std::ptrdiff_t> fixed) {
    loop_plan plan;
    plan.outer = make_levels(nodes, smaller);
    if (!fixed.empty()) plan.start = simplify(plan.outer, fixed);
    plan.one_to_one = is_one_to_one(plan.outer);
    compress(plan.outer);
    plan.larger_size = steps(plan.outer);
    plan.smaller_size = configurations(smaller);
    tile_choice(plan).make();
    return plan;
}

weighted_plan make_weighted_plan(std::span<node* const> nodes, std::span<node* const> smaller) {
    weighted_plan plan;
    std::size_t removed = 0;
    for (const loop_level& level : make_levels(nodes, smaller)) {
        if (level.count > 1) plan.loops.outer.push_back(level);
        if (level.kept()) continue;
        (level.count > 1 ? plan.outer_nodes : plan.one_state_nodes).push_back({removed++, level.count});
    }
    compress_weighted(plan.loops.outer);
    plan.loops.larger_size = steps(plan.loops.outer);
    plan.loops.smaller_size = configurations(smaller);
    tile_choice(plan.loops).make();
    auto first = plan.outer_nodes.end();
    if (plan.loops.tile.kind != tile_kind::crossed)
        for (std::size_t left = plan.loops.tile.removed.count; left > 1; left /= first->states) --first;
    plan.tile_nodes.assign(first, plan.outer_nodes.end());
    plan.outer_nodes.erase(first, plan.outer_nodes.end());
    give_nodes_levels(plan.loops.outer, plan.outer_nodes);
    return plan;
}

}  // namespace quarn
