#include "scaling.h"

#include <algorithm>
#include <cmath>

#include "errors.h"
#include "kernels.h"

namespace quarn {
namespace {

constexpr double safely_exact = 1e-290;  // what becomes smaller is watched

magnitudes magnitudes_of(std::span<const double> numbers) noexcept {
    return quarn::magnitudes_of(numbers.data(), numbers.size());
}

}  // namespace

void require_exact(double number) { require(number >= smallest_exact, q_error_inconsistency_or_underflow); }

double count_in(junction_tree& tree, double divisor) noexcept {
    tree.normalization *= divisor;
    tree.log_normalization += std::log(divisor);
    return divisor;
}

void count_logarithm(junction_tree& tree, double logarithm) noexcept {
    tree.normalization *= std::exp(logarithm);
    tree.log_normalization += logarithm;
}

void divide(junction_tree& tree, clique& divided, double divisor) noexcept {
    const std::span<double> numbers = divided.weights();
    scale(numbers.data(), numbers.size(), 1 / count_in(tree, divisor));
    divided.smallest_entry /= divisor;
}

void expect_factor(junction_tree& tree, clique& target, double smallest) noexcept {
    if (target.smallest_entry * smallest < safely_exact)  // perhaps the bound is only too low
        target.smallest_entry = magnitudes_of(target.weights()).smallest_positive;
    target.smallest_entry *= smallest;
    if (target.smallest_entry < safely_exact) tree.is_extensible = false;
}

void weights_changed(junction_tree& tree, clique& changed) noexcept {
    changed.smallest_entry = magnitudes_of(changed.weights()).smallest_positive;
    if (changed.smallest_entry < safely_exact) tree.is_extensible = false;
}

void multiply_into(const tree_context& in, clique& target, const table_map& map,
                   std::span<const double> factors) {
    expect_factor(in.tree, target, magnitudes_of(factors).smallest_positive);
    multiply(map, target.weights().data(), factors.data(), in.workers);
    if (target.smallest_entry >= safely_exact && std::isfinite(target.smallest_entry)) return;
    const magnitudes entries = magnitudes_of(target.weights());
    require_exact(entries.largest);
    target.smallest_entry = entries.smallest_positive;
    if (entries.largest < small) divide(in.tree, target, entries.largest);
}

void add_logarithms(const tree_context& in, clique& target, const table_map& map,
                    std::span<const double> factors) {
    number_array logarithms(factors.size());
    std::ranges::transform(factors, logarithms.begin(), [](double factor) { return std::log(factor); });
    add(map, target.weights().data(), logarithms.data(), in.workers);
}

}  // namespace quarn
