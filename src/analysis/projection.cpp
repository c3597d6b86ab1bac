#include "projection.h"

#include <algorithm>
#include <numeric>

#include "two_ended_choice.h"

namespace quarn {
namespace {

loop_levels levels_between(std::span<node* const> nodes, std::span<node* const> smaller) {
    loop_levels levels = make_levels(nodes, smaller);
    compress(levels);
    return levels;
}

}  // namespace

projection::projection(const table_map& map, std::span<node* const> nodes, std::span<node* const> smaller)
    : list_(map.loops() == nullptr ? &map : nullptr) {
    if (list_ == nullptr) digits_ = by_section(levels_between(nodes, smaller)).kept;
}

std::size_t projection::operator()(std::size_t entry) const noexcept {
    std::size_t position = 0;
    for (const loop_level& digit : digits_) position += entry / digit.larger % digit.count * digit.smaller;
    if (list_ != nullptr) list_->with_list([&](auto positions) { position = positions[entry]; });
    return position;
}

preimages::preimages(const table_map& map, std::span<node* const> nodes, std::span<node* const> smaller) {
    if (map.loops() != nullptr) {
        sectioned_levels sections = by_section(levels_between(nodes, smaller));
        kept_ = std::move(sections.kept);
        removed_ = std::move(sections.removed);
        return;
    }
    map.with_list([&](auto positions) {
        require(positions.size() <= UINT32_MAX, q_error_table_too_large);
        first_.resize(map.smaller_size() + 1);
        for (const std::size_t position : positions) ++first_[position + 1];
        std::inclusive_scan(first_.begin(), first_.end(), first_.begin());
        entries_.resize(positions.size());
        std::vector<std::size_t> next(first_.begin(), first_.end() - 1);
        for (std::size_t entry = 0; entry < positions.size(); ++entry)
            entries_[next[positions[entry]]++] = static_cast<uint32_t>(entry);
    });
}

std::size_t preimages::choose(const double* weights, std::size_t of, double total,
                              random_generator& generator) const {
    if (!first_.empty())
        return choose_listed(weights, std::span(entries_).subspan(first_[of], first_[of + 1] - first_[of]),
                             total, generator);
    std::size_t start = 0;
    for (const loop_level& digit : kept_) start += of / digit.smaller % digit.count * digit.larger;
    return start + choose_in_loops(weights + start, removed_, total, generator);
}

}  // namespace quarn
