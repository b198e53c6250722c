#include "output/zeroed_memory.h"

#include <cstdlib>

// Under AddressSanitizer every piece comes from calloc, where the sanitizer
// can watch its edges.
#if defined(__SANITIZE_ADDRESS__)
#define SORVEL_LARGE_PAGES 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SORVEL_LARGE_PAGES 0
#endif
#endif
#if !defined(SORVEL_LARGE_PAGES)
#if defined(__linux__)
#define SORVEL_LARGE_PAGES 1
#else
#define SORVEL_LARGE_PAGES 0
#endif
#endif

#if SORVEL_LARGE_PAGES
#include <sys/mman.h>
#endif

namespace sorvel {

#if SORVEL_LARGE_PAGES

namespace {

// Below this a piece is left to calloc: large pages only pay for large pieces.
constexpr size_t kLargePage = size_t{2} << 20;

}  // namespace

void* get_zeroed(size_t bytes) {
  if (bytes < kLargePage) return std::calloc(bytes, 1);
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
#if defined(MADV_HUGEPAGE)
  // Only advice: where large pages are not to be had, small ones serve.
  madvise(memory, bytes, MADV_HUGEPAGE);
#endif
  return memory;
}

void put_zeroed(void* memory, size_t bytes) {
  if (!memory) return;
  if (bytes < kLargePage)
    std::free(memory);
  else
    munmap(memory, bytes);
}

#else

void* get_zeroed(size_t bytes) { return std::calloc(bytes, 1); }

void put_zeroed(void* memory, size_t) { std::free(memory); }

#endif

}  // namespace sorvel
