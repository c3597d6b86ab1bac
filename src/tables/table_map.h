// How the entries of a table belong to those of a smaller one over some of its nodes.
//
// Where the table has an entry for every configuration of its nodes, that is a loop plan. A compressed one has entries
// for some of them only, and a list says for each the position of the one in the smaller table, in numbers as narrow as
// that table allows.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "errors.h"
#include "loop_plan.h"
#include "workers.h"

namespace quarn {

class table_map {
public:
    table_map() = default;
    table_map(loop_plan plan) : smaller_size_(plan.smaller_size), relation_(std::move(plan)) {}

    // A list for so many entries of the larger table: write(take) calls take(position, is_listed) for these and others.
    // Fails with q_error_table_too_large where positions do not fit into 32 bits.
    template <class Write>
    static table_map listed(std::size_t entries, std::size_t smaller_size, const Write& write) {
        if (smaller_size <= std::size_t{1} << 8) return {smaller_size, list<uint8_t>(entries, write)};
        if (smaller_size <= std::size_t{1} << 16) return {smaller_size, list<uint16_t>(entries, write)};
        require(smaller_size <= UINT32_MAX, q_error_table_too_large);
        return {smaller_size, list<uint32_t>(entries, write)};
    }

    std::size_t smaller_size() const noexcept { return smaller_size_; }
    const loop_plan* loops() const noexcept { return std::get_if<loop_plan>(&relation_); }  // null: a list
    // Calls visit(positions) where there is a list.
    template <class Visit>
    void with_list(const Visit& visit) const {
        std::visit(
            [&](const auto& form) {
                if constexpr (!std::is_same_v<decltype(form), const loop_plan&>) visit(std::span(form));
            },
            relation_);
    }
    std::size_t list_bytes() const noexcept;

private:
    using relation =
        std::variant<loop_plan, std::vector<uint8_t>, std::vector<uint16_t>, std::vector<uint32_t>>;
    table_map(std::size_t smaller_size, relation form)
        : smaller_size_(smaller_size), relation_(std::move(form)) {}

    template <class Position, class Write>
    static std::vector<Position> list(std::size_t entries, const Write& write) {
        std::vector<Position> positions(entries + 1);  // the last one for those that are not listed
        Position* next = positions.data();
        write([&](std::size_t at, bool is_listed) {  // a branch would be hard to predict
            *next = static_cast<Position>(at);
            next += is_listed;
        });
        positions.pop_back();
        return positions;
    }

    std::size_t smaller_size_ = 1;
    relation relation_;
};

// As the operations of the same names on loop plans. Those with a list use one thread only.
void multiply(const table_map& map, double* larger, const double* smaller, const workers& allowed = {});
void add(const table_map& map, double* larger, const double* smaller, const workers& allowed = {});
void sum_marginal(const table_map& map, const double* larger, double* smaller, const workers& allowed = {});
void max_marginal(const table_map& map, const double* larger, double* smaller, const workers& allowed = {});

}  // namespace quarn
