#include "memory.h"

#include <cstdlib>

namespace Tavo::Der {

void* Allocate(uint64_t octets) { return octets > PTRDIFF_MAX ? nullptr : malloc(octets != 0 ? octets : 1); }

void* AllocateZeroed(uint64_t octets) { return octets > PTRDIFF_MAX ? nullptr : calloc(1, octets != 0 ? octets : 1); }

void Release(void* block) { free(block); }

}  // namespace Tavo::Der
