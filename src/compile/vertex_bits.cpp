#include "vertex_bits.h"

#include <algorithm>

#include "clique_weight.h"

namespace quarn {

void unite(vertex_bits& set, bits_view added) noexcept {
    for (std::size_t i = 0; i < set.size(); ++i) set[i] |= added[i];
}

void subtract(vertex_bits& set, bits_view removed) noexcept {
    for (std::size_t i = 0; i < set.size(); ++i) set[i] &= ~removed[i];
}

bool is_subset(bits_view part, bits_view whole) noexcept {
    for (std::size_t i = 0; i < part.size(); ++i)
        if ((part[i] & ~whole[i]) != 0) return false;
    return true;
}

bool intersect(bits_view a, bits_view b) noexcept {
    for (std::size_t i = 0; i < a.size(); ++i)
        if ((a[i] & b[i]) != 0) return true;
    return false;
}

bool equal(bits_view a, bits_view b) noexcept {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return false;
    return true;
}

std::size_t count(bits_view set) noexcept {
    std::size_t found = 0;
    for (const uint64_t word : set) found += static_cast<std::size_t>(std::popcount(word));
    return found;
}

std::size_t set_table::add(bits_view set) {
    std::size_t place = place_of(set);
    if (places_[place] != absent) return places_[place];
    if (2 * (size_ + 1) > places_.size()) {
        grow();
        place = place_of(set);
    }
    sets_.insert(sets_.end(), set.begin(), set.end());
    return places_[place] = size_++;
}

void set_table::clear() noexcept {
    if (size_ == 0) return;
    std::ranges::fill(places_, absent);
    sets_.clear();
    size_ = 0;
}

std::size_t set_table::place_of(bits_view set) const noexcept {
    uint64_t hash = 0;
    for (const uint64_t word : set) {
        hash = (hash ^ word) * 0x9e3779b97f4a7c15;
        hash ^= hash >> 32;
    }
    std::size_t place = hash & (places_.size() - 1);
    while (places_[place] != absent && !equal((*this)[places_[place]], set))
        place = (place + 1) & (places_.size() - 1);
    return place;
}

void set_table::grow() {
    std::vector<std::size_t>(2 * places_.size(), absent).swap(places_);
    for (std::size_t number = 0; number < size_; ++number) places_[place_of((*this)[number])] = number;
}

bit_graph::bit_graph(const graph& connected)
    : words_((connected.vertex_count() + 63) / 64), number_of_(connected.vertex_count()) {
    number_vertices(connected);
    rows_.resize(words_ * vertex_count());
    for (vertex v = 0; v < vertex_count(); ++v) {
        domains_.push_back(connected.domains[original_[v]]);
        const vertex_bits row = to_bits(connected.neighbors[original_[v]]);
        std::ranges::copy(row, rows_.begin() + static_cast<std::ptrdiff_t>(v * words_));
    }
}

// Next comes a vertex with most neighbours among those before it.
void bit_graph::number_vertices(const graph& connected) {
    std::vector<std::size_t> reached(connected.vertex_count());
    std::vector<char> numbered(connected.vertex_count());
    while (original_.size() < connected.vertex_count()) {
        vertex best = 0;
        for (vertex v = 0; v < connected.vertex_count(); ++v)
            if (!numbered[v] && (numbered[best] || reached[v] > reached[best])) best = v;
        numbered[best] = true;
        number_of_[best] = original_.size();
        original_.push_back(best);
        for (const vertex neighbor : connected.neighbors[best]) ++reached[neighbor];
    }
}

double bit_graph::weight_of(bits_view set) const noexcept {
    clique_weight weight;
    for_each(set, [&](vertex member) { weight.add(domains_[member]); });
    return weight.value();
}

vertex_bits bit_graph::first(std::size_t vertices) const {
    vertex_bits set(words_);
    for (vertex v = 0; v < vertices; ++v) insert(set, v);
    return set;
}

vertex_bits bit_graph::to_bits(const vertex_set& set) const {
    vertex_bits made(words_);
    for (const vertex member : set) insert(made, number_of_[member]);
    return made;
}

vertex_set bit_graph::to_vertices(bits_view set) const {
    vertex_set made;
    for_each(set, [&](vertex member) { made.push_back(original_[member]); });
    std::ranges::sort(made);
    return made;
}

void component_walk::start(bits_view vertices, bits_view removed) noexcept {
    removed_ = removed;
    for (std::size_t i = 0; i < left_.size(); ++i) left_[i] = vertices[i] & ~removed[i];
}

bool component_walk::next() noexcept {
    const std::size_t words = left_.size();
    uint64_t* const left = left_.data();
    uint64_t* const pending = pending_.data();
    std::size_t at = 0;
    while (left[at] == 0)
        if (++at == words) return false;
    for (std::size_t i = 0; i < words; ++i) component_[i] = border_[i] = 0;
    pending[at] = left[at] & (~left[at] + 1);
    std::size_t steps = 0;
    for (; at < words; ++steps) {
        const std::size_t bit = static_cast<std::size_t>(std::countr_zero(pending[at]));
        const uint64_t* const row = whole_.neighbors(64 * at + bit).data();
        left[at] &= ~(uint64_t{1} << bit);
        pending[at] &= pending[at] - 1;
        component_[at] |= uint64_t{1} << bit;
        for (std::size_t i = 0; i < words; ++i) {
            border_[i] |= row[i];
            pending[i] |= row[i] & left[i];
        }
        for (at = 0; at < words && pending[at] == 0;) ++at;
    }
    for (std::size_t i = 0; i < words; ++i) border_[i] &= removed_[i];
    work_.spend(steps * words);
    return true;
}

}  // namespace quarn
