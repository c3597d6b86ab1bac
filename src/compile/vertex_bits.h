// Sets of vertices as bits, for searches that handle very many of them. All sets of one search have as many words.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "graph.h"

namespace quarn {

using vertex_bits = std::vector<uint64_t>;
using bits_view = std::span<const uint64_t>;

inline vertex_bits copy_of(bits_view set) { return {set.begin(), set.end()}; }
inline bool holds(bits_view set, vertex v) noexcept { return (set[v / 64] >> v % 64 & 1) != 0; }
inline void insert(vertex_bits& set, vertex v) noexcept { set[v / 64] |= uint64_t{1} << v % 64; }
void unite(vertex_bits& set, bits_view added) noexcept;
void subtract(vertex_bits& set, bits_view removed) noexcept;
bool is_subset(bits_view part, bits_view whole) noexcept;
bool intersect(bits_view a, bits_view b) noexcept;
bool equal(bits_view a, bits_view b) noexcept;
std::size_t count(bits_view set) noexcept;

template <class Visit>
void for_each(bits_view set, Visit&& visit) {
    for (std::size_t i = 0; i < set.size(); ++i)
        for (uint64_t left = set[i]; left != 0; left &= left - 1)
            visit(64 * i + static_cast<std::size_t>(std::countr_zero(left)));
}

// Bounds a search by the words that it looks at, so that results do not depend on the machine.
class search_work {
public:
    explicit search_work(uint64_t limit) noexcept : limit_(limit) {}
    void spend(uint64_t words) noexcept { spent_ += words; }
    bool is_over() const noexcept { return spent_ >= limit_; }
    uint64_t spent() const noexcept { return spent_; }
    uint64_t left() const noexcept { return is_over() ? 0 : limit_ - spent_; }

private:
    uint64_t limit_;
    uint64_t spent_ = 0;
};

// Different sets, numbered in the order in which they were added.
class set_table {
public:
    explicit set_table(std::size_t words) : words_(words), places_(16, absent) {}

    std::size_t size() const noexcept { return size_; }
    bits_view operator[](std::size_t number) const noexcept {
        return {sets_.data() + number * words_, words_};
    }
    bool contains(bits_view set) const noexcept { return places_[place_of(set)] != absent; }
    // The number of the set, which is added when it is new. It may not be one of this table's own.
    std::size_t add(bits_view set);
    void clear() noexcept;

private:
    static constexpr std::size_t absent = static_cast<std::size_t>(-1);

    std::size_t place_of(bits_view set) const noexcept;
    void grow();

    std::size_t words_;
    std::size_t size_ = 0;
    std::vector<uint64_t> sets_;
    std::vector<std::size_t> places_;  // by hash, a power of two of them
};

// A connected graph, its vertices numbered such that the first i induce a connected graph, for every i.
class bit_graph {
public:
    explicit bit_graph(const graph& connected);

    std::size_t vertex_count() const noexcept { return original_.size(); }
    std::size_t words() const noexcept { return words_; }
    bits_view neighbors(vertex v) const noexcept { return {rows_.data() + v * words_, words_}; }
    double weight_of(bits_view set) const noexcept;
    vertex_bits first(std::size_t vertices) const;
    // To and from the vertices of the graph that this one was made of.
    vertex_bits to_bits(const vertex_set& set) const;
    vertex_set to_vertices(bits_view set) const;

private:
    void number_vertices(const graph& connected);

    std::size_t words_;
    std::vector<uint64_t> rows_;
    std::vector<vertex_domain> domains_;
    std::vector<vertex> original_;
    std::vector<vertex> number_of_;
};

// Walks over the components of the graph that some vertices induce when some of these are removed.
class component_walk {
public:
    component_walk(const bit_graph& whole, search_work& work)
        : whole_(whole),
          work_(work),
          left_(whole.words()),
          pending_(left_),
          component_(left_),
          border_(left_) {}

    void start(bits_view vertices, bits_view removed) noexcept;
    bool next() noexcept;
    bits_view component() const noexcept { return component_; }
    bits_view border() const noexcept { return border_; }  // its neighbours among the removed

private:
    const bit_graph& whole_;
    search_work& work_;
    bits_view removed_;
    vertex_bits left_;
    vertex_bits pending_;
    vertex_bits component_;
    vertex_bits border_;
};

}  // namespace quarn
