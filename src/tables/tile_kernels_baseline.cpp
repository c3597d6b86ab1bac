#define QUARN_INSTRUCTION_SET baseline
#include "tile_kernel_bodies.h"
