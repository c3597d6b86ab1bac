// The innermost loops of the operations between two tables: what one operation does with one tile of a loop plan.
//
// A kernel takes pointers to the first entries and the tile, allocates nothing and cannot fail. Each exists in several
// forms, for the kinds of tiles; and all of them for the instruction sets that a machine may have. The forms for
// different instruction sets give the same results to the bit, but for the sign and payload of a NaN.
#pragma once

#include <cstddef>

#include "loop_plan.h"

namespace quarn {

// A tile, or a range of its kept steps.
struct tile_view {
    explicit tile_view(const loop_tile& tile) noexcept
        : kept(tile.kept),
          removed(tile.removed),
          kept_positions(tile.kept_positions.data()),
          removed_positions(tile.removed_positions.data()) {}

    loop_level kept;
    loop_level removed;
    const tile_position* kept_positions;
    const std::size_t* removed_positions;
};

// Changes entries of the larger table by entries of the smaller one.
using apply_kernel = void (*)(const tile_view& tile, double* larger, const double* smaller) noexcept;

// What is summed up or compared: the entries of the larger table, times `weight` and the weight of the removed step if
// there are such, or times the entries of a second table of the same shape.
struct reduction_input {
    const double* larger;
    const double* second;        // null: none
    const double* step_weights;  // null: all are 1
    double weight;
};
// Takes entries of the larger table into entries of the smaller one.
using reduce_kernel = void (*)(const tile_view& tile, const reduction_input& input, double* smaller) noexcept;

// One kernel for each kind of tile, in the order of tile_kind.
struct apply_kernels {
    apply_kernel of_kind[4];
    apply_kernel operator[](tile_kind kind) const noexcept { return of_kind[static_cast<std::size_t>(kind)]; }
};
struct reduce_kernels {
    reduce_kernel of_kind[4];
    reduce_kernel operator[](tile_kind kind) const noexcept {
        return of_kind[static_cast<std::size_t>(kind)];
    }
};

struct tile_kernel_set {
    apply_kernels multiply;
    apply_kernels divide_unless_zero;  // a divisor of exactly 0 leaves the entry
    apply_kernels divide_if_positive;  // a divisor that is not greater than 0, NaN included, leaves the entry
    apply_kernels add;
    apply_kernels assign;

    // Starting a reduction: the first entry that belongs to each of the smaller table, or 0.
    reduce_kernels clear;
    reduce_kernels first;
    reduce_kernels first_product;
    reduce_kernels first_weighted;
    // Going on with it.
    reduce_kernels sum;
    reduce_kernels product_sum;
    reduce_kernels weighted_sum;
    reduce_kernels maximum;  // replaced by strictly greater entries only
    reduce_kernels weighted_maximum;
};

// The kernels for this machine.
const tile_kernel_set& tile_kernels() noexcept;

namespace baseline {
extern const tile_kernel_set kernel_set;
}
namespace avx2 {
extern const tile_kernel_set kernel_set;
}

}  // namespace quarn
