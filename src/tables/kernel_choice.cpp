#include "tile_kernels.h"

namespace quarn {

const tile_kernel_set& tile_kernels() noexcept {
    return __builtin_cpu_supports("avx2") ? avx2::kernel_set : baseline::kernel_set;
}

}  // namespace quarn
