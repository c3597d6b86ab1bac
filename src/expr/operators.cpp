#include "operators.h"

#include <algorithm>
#include <array>

namespace quarn {
namespace {

using enum signature;
using enum value_type;
using enum notation;

constexpr std::array<operator_row, q_operator_number - q_operator_normal> rows{{
    {q_operator_normal, "Normal", 2, 2, numbers, distribution},
    {q_operator_log_normal, "LogNormal", 2, 3, numbers, distribution},
    {q_operator_beta, "Beta", 2, 4, number_pairs, distribution},
    {q_operator_gamma, "Gamma", 2, 3, numbers, distribution},
    {q_operator_exponential, "Exponential", 1, 2, numbers, distribution},
    {q_operator_weibull, "Weibull", 2, 3, numbers, distribution},
    {q_operator_uniform, "Uniform", 2, 2, numbers, distribution},
    {q_operator_triangular, "Triangular", 3, 3, numbers, distribution},
    {q_operator_pert, "PERT", 3, 4, numbers, distribution},
    {q_operator_binomial, "Binomial", 2, 2, numbers, distribution},
    {q_operator_poisson, "Poisson", 1, 1, numbers, distribution},
    {q_operator_negative_binomial, "NegativeBinomial", 2, 2, numbers, distribution},
    {q_operator_geometric, "Geometric", 1, 1, numbers, distribution},
    {q_operator_distribution, "Distribution", 1, any_number, numbers, distribution},
    {q_operator_noisy_or, "NoisyOR", 2, any_number, causes, distribution},
    {q_operator_truncate, "truncate", 2, 3, truncated, distribution},
    {q_operator_aggregate, "aggregate", 2, 2, compound, distribution},
    {q_operator_probability, "probability", 1, 1, condition, number},
    {q_operator_variance, "variance", 1, 1, numeric_node, number},
    {q_operator_quantile, "quantile", 2, 2, numeric_node_level, number},
    {q_operator_min, "min", 1, any_number, numbers, number},
    {q_operator_max, "max", 1, any_number, numbers, number},
    {q_operator_log, "log", 1, 1, numbers, number},
    {q_operator_log2, "log2", 1, 1, numbers, number},
    {q_operator_log10, "log10", 1, 1, numbers, number},
    {q_operator_exp, "exp", 1, 1, numbers, number},
    {q_operator_sin, "sin", 1, 1, numbers, number},
    {q_operator_cos, "cos", 1, 1, numbers, number},
    {q_operator_tan, "tan", 1, 1, numbers, number},
    {q_operator_sinh, "sinh", 1, 1, numbers, number},
    {q_operator_cosh, "cosh", 1, 1, numbers, number},
    {q_operator_tanh, "tanh", 1, 1, numbers, number},
    {q_operator_sqrt, "sqrt", 1, 1, numbers, number},
    {q_operator_abs, "abs", 1, 1, numbers, number},
    {q_operator_floor, "floor", 1, 1, numbers, number},
    {q_operator_ceil, "ceil", 1, 1, numbers, number},
    {q_operator_mod, "mod", 2, 2, numbers, number},
    {q_operator_if, "if", 3, 3, choice, number},
    {q_operator_and, "and", 0, any_number, booleans, boolean},
    {q_operator_or, "or", 0, any_number, booleans, boolean},
    {q_operator_not, "not", 1, 1, booleans, boolean},
    {q_operator_add, "+", 2, 2, numbers, number, infix},
    {q_operator_subtract, "-", 2, 2, numbers, number, infix},
    {q_operator_multiply, "*", 2, 2, numbers, number, infix},
    {q_operator_divide, "/", 2, 2, numbers, number, infix},
    {q_operator_power, "^", 2, 2, numbers, number, infix},
    {q_operator_negate, "-", 1, 1, numbers, number, prefix},
    {q_operator_state_index, "#", 1, 1, discrete_node, number, prefix},
    {q_operator_equals, "==", 2, 2, alike, boolean, infix},
    {q_operator_less_than, "<", 2, 2, numbers, boolean, infix},
    {q_operator_greater_than, ">", 2, 2, numbers, boolean, infix},
    {q_operator_not_equals, "!=", 2, 2, alike, boolean, infix},
    {q_operator_less_than_or_equals, "<=", 2, 2, numbers, boolean, infix},
    {q_operator_greater_than_or_equals, ">=", 2, 2, numbers, boolean, infix},
}};

constexpr bool rows_are_in_order() {
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].op != q_operator_normal + static_cast<q_operator_t>(i)) return false;
    return true;
}
static_assert(rows_are_in_order());

}  // namespace

const operator_row& row_of(q_operator_t op) noexcept {
    return rows[static_cast<std::size_t>(op - q_operator_normal)];
}

const operator_row* find_function(std::string_view name) noexcept {
    const auto* const found = std::ranges::find(rows, name, &operator_row::name);
    return found != rows.end() && found->written == function ? found : nullptr;
}

}  // namespace quarn
