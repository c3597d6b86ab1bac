#include "table_map.h"

#include "position_kernels.h"
#include "table_operations.h"

namespace quarn {

std::size_t table_map::list_bytes() const noexcept {
    std::size_t bytes = 0;
    with_list([&](auto positions) { bytes = positions.size_bytes(); });
    return bytes;
}

void multiply(const table_map& map, double* larger, const double* smaller, const workers& allowed) {
    if (map.loops() != nullptr) return multiply(*map.loops(), larger, smaller, allowed);
    map.with_list([&](auto positions) { multiply(positions, larger, smaller); });
}

void add(const table_map& map, double* larger, const double* smaller, const workers& allowed) {
    if (map.loops() != nullptr) return add(*map.loops(), larger, smaller, allowed);
    map.with_list([&](auto positions) { add(positions, larger, smaller); });
}

void sum_marginal(const table_map& map, const double* larger, double* smaller, const workers& allowed) {
    if (map.loops() != nullptr) return sum_marginal(*map.loops(), larger, smaller, allowed);
    map.with_list([&](auto positions) { sum_marginal(positions, larger, smaller, map.smaller_size()); });
}

void max_marginal(const table_map& map, const double* larger, double* smaller, const workers& allowed) {
    if (map.loops() != nullptr) return max_marginal(*map.loops(), larger, smaller, allowed);
    map.with_list([&](auto positions) { max_marginal(positions, larger, smaller, map.smaller_size()); });
}

}  // namespace quarn
