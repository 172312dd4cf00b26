// Large buffers (a loaded message, a decoded body) are asked of the host in large pages where
// it offers them. A fresh buffer of small pages costs a page fault for every 4 KB first
// written, which for a buffer of megabytes takes longer than the work done in it.
#ifndef MAILSLICE_PLATFORM_LARGE_PAGES_H
#define MAILSLICE_PLATFORM_LARGE_PAGES_H

#include <cstddef>

namespace mailslice::platform {

// A hint for the `bytes` at `data`, a buffer of the caller's that is about to be filled: the
// whole large pages that fit inside it are to be backed by large pages. Nothing outside the
// buffer is touched, and nothing changes where the host has no large pages.
void PreferLargePages(void* data, size_t bytes);

// malloc(bytes), for a buffer of megabytes placed so that large pages cover all of it; freed
// with free(). Hinted as PreferLargePages does.
void* AllocateLarge(size_t bytes);

// Reserves room for `count` characters in `text` and gives the hint for it.
template <typename String>
void ReserveLarge(String& text, size_t count) {
  text.reserve(count);
  PreferLargePages(text.data(), text.capacity() * sizeof(*text.data()));
}

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_LARGE_PAGES_H
