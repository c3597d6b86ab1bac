#include "sampler.h"

#include <cmath>

namespace quarn {

void log_product::multiply(double probability) noexcept {
    constexpr double small = 0x1p-500;  // a power of 2 costs no digits
    if (probability < small) {
        logarithm_ += std::log(probability);
        return;
    }
    product_ *= probability;
    if (product_ < small) {
        logarithm_ += std::log(small);
        product_ /= small;
    }
}

double log_product::value() const noexcept { return logarithm_ + std::log(product_); }

}  // namespace quarn
