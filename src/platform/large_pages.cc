#include "platform/large_pages.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace mailslice::platform {
namespace {

// The size of a transparent huge page on x86-64 and most other hosts.
constexpr uintptr_t kLargePageBytes = uintptr_t{2} << 20;

}  // namespace

void PreferLargePages(void* data, size_t bytes) {
#ifdef MADV_HUGEPAGE
  auto begin = reinterpret_cast<uintptr_t>(data);
  uintptr_t first = (begin + kLargePageBytes - 1) & ~(kLargePageBytes - 1);
  uintptr_t last = (begin + bytes) & ~(kLargePageBytes - 1);
  if (data == nullptr || last <= first) return;
  // Only a hint: a host without large pages refuses it, and the buffer works as before.
  madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
  (void)data;
  (void)bytes;
#endif
}

void* AllocateLarge(size_t bytes) {
  if (bytes < kLargePageBytes) return std::malloc(bytes);
  // Rounded up to whole large pages, as aligned_alloc asks; the pages behind `bytes` are
  // touched only if the caller writes there.
  size_t rounded = (bytes + kLargePageBytes - 1) & ~(kLargePageBytes - 1);
  void* data = std::aligned_alloc(kLargePageBytes, rounded);
  if (data == nullptr) return std::malloc(bytes);
  PreferLargePages(data, rounded);
  return data;
}

}  // namespace mailslice::platform
