#include "ScrivlyKit/platform/Memory.h"

#include <cstdlib> // defines __GLIBC__ where the C library is glibc

// Under a sanitizer the heap is the sanitizer's own: glibc's arena behind malloc_trim and mallopt
// was never set up, and trimming it reads through null pointers.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SCRIVLY_SANITIZED_HEAP 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SCRIVLY_SANITIZED_HEAP 1
#endif

#if defined(__GLIBC__) && !defined(SCRIVLY_SANITIZED_HEAP)
#define SCRIVLY_GLIBC_HEAP 1
#include <malloc.h>
#endif

namespace scrivly::Memory {

void releaseFreePages() noexcept {
#if defined(SCRIVLY_GLIBC_HEAP)
    malloc_trim(0);
#endif
}

void useReturnableHeap() noexcept {
#if defined(SCRIVLY_GLIBC_HEAP)
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
#endif
}

} // namespace scrivly::Memory
