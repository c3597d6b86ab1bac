#define QUARN_INSTRUCTION_SET avx2
#include "tile_kernel_bodies.h"
