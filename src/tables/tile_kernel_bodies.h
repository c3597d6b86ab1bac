// The bodies of the kernels, compiled once for each instruction set in the namespace QUARN_INSTRUCTION_SET. Nothing here
// may have external linkage but the set itself, and no inline function from elsewhere may be called: the linker would
// take one version of it for all machines.
#include "tile_kernels.h"

namespace quarn::QUARN_INSTRUCTION_SET {
namespace {

// --- Changing the larger table.

struct multiplication {
    static double of(double entry, double by) noexcept { return entry * by; }
};
struct division_unless_zero {
    static double of(double entry, double by) noexcept { return by == 0 ? entry : entry / by; }
};
struct division_if_positive {
    static double of(double entry, double by) noexcept { return by > 0 ? entry / by : entry; }
};
struct addition {
    static double of(double entry, double by) noexcept { return entry + by; }
};
struct assignment {
    static double of(double, double by) noexcept { return by; }
};

template <class Operation>
void apply_rows(const tile_view& tile, double* larger, const double* smaller) noexcept {
    const std::size_t length = tile.removed.count, step = tile.removed.larger;
    for (std::size_t k = 0; k < tile.kept.count; ++k) {
        double* const row = larger + k * tile.kept.larger;
        const double by = smaller[k * tile.kept.smaller];
        if (step == 1)
            for (std::size_t i = 0; i < length; ++i) row[i] = Operation::of(row[i], by);
        else
            for (std::size_t i = 0; i < length; ++i) row[i * step] = Operation::of(row[i * step], by);
    }
}

template <class Operation>
void apply_run(double* __restrict row, const double* __restrict by, std::size_t length) noexcept {
    for (std::size_t i = 0; i < length; ++i) row[i] = Operation::of(row[i], by[i]);
}

template <class Operation>
void apply_columns(const tile_view& tile, double* larger, const double* smaller) noexcept {
    const std::size_t length = tile.kept.count, step = tile.kept.larger, by_step = tile.kept.smaller;
    for (std::size_t r = 0; r < tile.removed.count; ++r) {
        double* const row = larger + r * tile.removed.larger;
        if (step == 1 && by_step == 1)
            apply_run<Operation>(row, smaller, length);
        else
            for (std::size_t i = 0; i < length; ++i)
                row[i * step] = Operation::of(row[i * step], smaller[i * by_step]);
    }
}

// In squares, so that the cache lines of both tables are used up while they are there.
constexpr std::size_t square = 16;

template <class Entry>
void go_crosswise(const tile_view& tile, const Entry& entry) noexcept {
    const loop_level &a = tile.kept, &b = tile.removed;
    for (std::size_t first_b = 0; first_b < b.count; first_b += square) {
        const std::size_t end_b = first_b + square < b.count ? first_b + square : b.count;
        for (std::size_t first_a = 0; first_a < a.count; first_a += square) {
            const std::size_t end_a = first_a + square < a.count ? first_a + square : a.count;
            for (std::size_t j = first_b; j < end_b; ++j)
                for (std::size_t i = first_a; i < end_a; ++i)
                    entry(i * a.larger + j * b.larger, i * a.smaller + j * b.smaller);
        }
    }
}

template <class Operation>
void apply_crossed(const tile_view& tile, double* larger, const double* smaller) noexcept {
    go_crosswise(tile, [=](std::size_t at, std::size_t by) noexcept {
        larger[at] = Operation::of(larger[at], smaller[by]);
    });
}

template <class Operation>
void apply_scattered(const tile_view& tile, double* larger, const double* smaller) noexcept {
    for (std::size_t k = 0; k < tile.kept.count; ++k) {
        double* const first = larger + tile.kept_positions[k].larger;
        const double by = smaller[tile.kept_positions[k].smaller];
        for (std::size_t r = 0; r < tile.removed.count; ++r) {
            double& entry = first[tile.removed_positions[r]];
            entry = Operation::of(entry, by);
        }
    }
}

template <class Operation>
constexpr apply_kernels applying{
    {apply_rows<Operation>, apply_columns<Operation>, apply_crossed<Operation>, apply_scattered<Operation>}};

// --- Reducing the larger table into the smaller one.

struct summation {
    static double of(double sum, double entry) noexcept { return sum + entry; }
    static double start_of_lane(double) noexcept { return 0; }
};
struct maximisation {
    static double of(double largest, double entry) noexcept { return entry > largest ? entry : largest; }
    static double start_of_lane(double largest) noexcept { return largest; }
};

// What stands at a position of the larger table, in removed step r.
struct plain {
    explicit plain(const reduction_input& input) noexcept : larger(input.larger) {}
    double operator()(std::size_t at, std::size_t) const noexcept { return larger[at]; }
    const double* __restrict larger;
};
struct times_second {
    explicit times_second(const reduction_input& input) noexcept
        : larger(input.larger), second(input.second) {}
    double operator()(std::size_t at, std::size_t) const noexcept { return larger[at] * second[at]; }
    const double* __restrict larger;
    const double* __restrict second;
};
struct times_weight {
    explicit times_weight(const reduction_input& input) noexcept
        : larger(input.larger), weight(input.weight) {}
    double operator()(std::size_t at, std::size_t) const noexcept { return larger[at] * weight; }
    const double* __restrict larger;
    double weight;
};
struct times_weights {
    explicit times_weights(const reduction_input& input) noexcept
        : larger(input.larger), step_weights(input.step_weights), weight(input.weight) {}
    double operator()(std::size_t at, std::size_t r) const noexcept {
        return larger[at] * (step_weights[r] * weight);
    }
    const double* __restrict larger;
    const double* __restrict step_weights;
    double weight;
};

// A long run goes into many lanes at once, as each addition has to wait for the one before.
template <class Reduction, class Input>
double reduce_run(const Input& input, std::size_t first, std::size_t step, std::size_t length,
                  double result) noexcept {
    constexpr std::size_t lanes = 16;
    std::size_t i = 0;
    if (step == 1 && length >= 2 * lanes) {
        double lane[lanes];
        for (double& l : lane) l = Reduction::start_of_lane(result);
        for (; i + lanes <= length; i += lanes)
            for (std::size_t l = 0; l < lanes; ++l)
                lane[l] = Reduction::of(lane[l], input(first + i + l, i + l));
        for (std::size_t width = lanes / 2; width > 0; width /= 2)
            for (std::size_t l = 0; l < width; ++l) lane[l] = Reduction::of(lane[l], lane[l + width]);
        result = Reduction::of(result, lane[0]);
    }
    for (; i < length; ++i) result = Reduction::of(result, input(first + i * step, i));
    return result;
}

template <class Reduction, class Input>
void reduce_rows(const tile_view& tile, const reduction_input& given, double* smaller) noexcept {
    const Input input(given);
    for (std::size_t k = 0; k < tile.kept.count; ++k) {
        double& result = smaller[k * tile.kept.smaller];
        result = reduce_run<Reduction>(input, k * tile.kept.larger, tile.removed.larger, tile.removed.count,
                                       result);
    }
}

// Four rows at a time, so that the results are read and written less often; each is still reduced row after row.
template <class Reduction, class Input>
void reduce_columns(const tile_view& tile, const reduction_input& given,
                    double* __restrict smaller) noexcept {
    const Input input(given);
    const std::size_t length = tile.kept.count, rows = tile.removed.count, row = tile.removed.larger;
    const std::size_t step = tile.kept.larger, result_step = tile.kept.smaller;
    if (step != 1 || result_step != 1) {
        for (std::size_t i = 0; i < length; ++i) {
            double result = smaller[i * result_step];
            for (std::size_t r = 0; r < rows; ++r)
                result = Reduction::of(result, input(i * step + r * row, r));
            smaller[i * result_step] = result;
        }
        return;
    }
    std::size_t r = 0;
    for (; r + 4 <= rows; r += 4)
        for (std::size_t i = 0; i < length; ++i) {
            double result = Reduction::of(smaller[i], input(r * row + i, r));
            result = Reduction::of(result, input((r + 1) * row + i, r + 1));
            result = Reduction::of(result, input((r + 2) * row + i, r + 2));
            smaller[i] = Reduction::of(result, input((r + 3) * row + i, r + 3));
        }
    for (; r < rows; ++r)
        for (std::size_t i = 0; i < length; ++i)
            smaller[i] = Reduction::of(smaller[i], input(r * row + i, r));
}

template <class Reduction, class Input>
void reduce_crossed(const tile_view& tile, const reduction_input& given, double* smaller) noexcept {
    const Input input(given);
    go_crosswise(tile, [=](std::size_t at, std::size_t into) noexcept {
        smaller[into] = Reduction::of(smaller[into], input(at, 0));
    });
}

template <class Reduction, class Input>
void reduce_scattered(const tile_view& tile, const reduction_input& given, double* smaller) noexcept {
    const Input input(given);
    for (std::size_t k = 0; k < tile.kept.count; ++k) {
        const tile_position& position = tile.kept_positions[k];
        double result = smaller[position.smaller];
        for (std::size_t r = 0; r < tile.removed.count; ++r)
            result = Reduction::of(result, input(position.larger + tile.removed_positions[r], r));
        smaller[position.smaller] = result;
    }
}

template <class Reduction, class Input>
constexpr reduce_kernels reducing{{reduce_rows<Reduction, Input>, reduce_columns<Reduction, Input>,
                                   reduce_crossed<Reduction, Input>, reduce_scattered<Reduction, Input>}};

// The weights of crossed tiles, which remove nothing, and of tiles whose removed steps all weigh the same.
template <class Reduction>
void reduce_weighted(const tile_view& tile, const reduction_input& input, double* smaller,
                     tile_kind kind) noexcept {
    if (input.step_weights == nullptr)
        reducing<Reduction, times_weight>.of_kind[static_cast<std::size_t>(kind)](tile, input, smaller);
    else
        reducing<Reduction, times_weights>.of_kind[static_cast<std::size_t>(kind)](tile, input, smaller);
}
template <class Reduction, tile_kind Kind>
void reduce_weighted(const tile_view& tile, const reduction_input& input, double* smaller) noexcept {
    reduce_weighted<Reduction>(tile, input, smaller, Kind);
}
template <class Reduction>
constexpr reduce_kernels reducing_weighted{
    {reduce_weighted<Reduction, tile_kind::rows>, reduce_weighted<Reduction, tile_kind::columns>,
     reduce_weighted<Reduction, tile_kind::crossed>, reduce_weighted<Reduction, tile_kind::scattered>}};

// --- Starting a reduction: every entry of the smaller table that the tile meets, with its first removed step.

template <class Input>
struct starting {
    static void levels(const tile_view& tile, const reduction_input& given, double* smaller) noexcept {
        const Input input(given);
        for (std::size_t k = 0; k < tile.kept.count; ++k)
            smaller[k * tile.kept.smaller] = input(k * tile.kept.larger, 0);
    }
    static void crossed(const tile_view& tile, const reduction_input& given, double* smaller) noexcept {
        const Input input(given);
        go_crosswise(tile, [=](std::size_t at, std::size_t into) noexcept { smaller[into] = input(at, 0); });
    }
    static void scattered(const tile_view& tile, const reduction_input& given, double* smaller) noexcept {
        const Input input(given);
        for (std::size_t k = 0; k < tile.kept.count; ++k)
            smaller[tile.kept_positions[k].smaller] = input(tile.kept_positions[k].larger, 0);
    }
    static constexpr reduce_kernels kernels{{levels, levels, crossed, scattered}};
};

struct nothing {
    explicit nothing(const reduction_input&) noexcept {}
    double operator()(std::size_t, std::size_t) const noexcept { return 0; }
};
struct first_weighted {
    explicit first_weighted(const reduction_input& input) noexcept
        : larger(input.larger),
          weight(input.step_weights == nullptr ? input.weight : input.step_weights[0] * input.weight) {}
    double operator()(std::size_t at, std::size_t) const noexcept { return larger[at] * weight; }
    const double* larger;
    double weight;
};

}  // namespace

const tile_kernel_set kernel_set{
    applying<multiplication>,
    applying<division_unless_zero>,
    applying<division_if_positive>,
    applying<addition>,
    applying<assignment>,
    starting<nothing>::kernels,
    starting<plain>::kernels,
    starting<times_second>::kernels,
    starting<first_weighted>::kernels,
    reducing<summation, plain>,
    reducing<summation, times_second>,
    reducing_weighted<summation>,
    reducing<maximisation, plain>,
    reducing_weighted<maximisation>,
};

}  // namespace quarn::QUARN_INSTRUCTION_SET
