#include "ScrivlyKit/platform/Memory.h"

#include <cstdlib> // defines __GLIBC__ where the C library is glibc

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace scrivly::Memory {

void releaseFreePages() noexcept {
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

void useReturnableHeap() noexcept {
#if defined(__GLIBC__)
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
#endif
}

} // namespace scrivly::Memory
