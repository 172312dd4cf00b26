#include "platform/spare_buffers.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/large_pages.h"

namespace mailslice::platform {
namespace {

// A larger buffer goes back to the host: a rare body of many megabytes does not hold its memory
// for the small ones after it, and a thread never keeps more than 16 MB between bodies (four
// buffers), usually 2 to 3 MB after an HTML body of 1 MB.
constexpr size_t kMostKeptBytes = size_t{4} << 20;
constexpr size_t kMostRoomPerSize = 2;

// Two of each kind: a body's decoded bytes and its narrowed page are in use at the same time.
constexpr size_t kKeptOfEachKind = 2;

template <typename String>
std::array<String, kKeptOfEachKind>& Kept() {
  thread_local std::array<String, kKeptOfEachKind> kept;
  return kept;
}

// A kept buffer with room for `size` and not too much more (or no more than `roomy`), as it is;
// else an empty one.
template <typename String>
String Kept(size_t size, size_t roomy = 0) {
  String taken;
  for (String& kept : Kept<String>()) {
    if (kept.capacity() >= size &&
        (kept.capacity() / kMostRoomPerSize <= size || kept.capacity() <= roomy)) {
      taken.swap(kept);
      break;
    }
  }
  return taken;
}

template <typename String>
String Take(size_t size) {
  String taken = Kept<String>(size);
  taken.clear();
  ReserveLarge(taken, size);
  return taken;
}

// Replaces the kept buffer with the least room, when `buffer` has more.
template <typename String>
void Keep(String buffer) {
  auto& kept = Kept<String>();
  size_t bytes = buffer.capacity() * sizeof(typename String::value_type);
  String& least = *std::min_element(kept.begin(), kept.end(), [](const String& a, const String& b) {
    return a.capacity() < b.capacity();
  });
  if (bytes > kMostKeptBytes || buffer.capacity() <= least.capacity()) return;
  least = std::move(buffer);
}

}  // namespace

std::string TakeSpareBytes(size_t size) { return Take<std::string>(size); }

std::string TakeSpareRoom(size_t size) {
  // The room goes back to the kept buffers after use, so a small text may take one of a few
  // ten kilobytes.
  constexpr size_t kRoomyBytes = size_t{64} << 10;
  std::string taken = Kept<std::string>(size, kRoomyBytes);
  ReserveLarge(taken, size);
  taken.resize(size);
  return taken;
}

std::u16string TakeSpareWide(size_t size) { return Take<std::u16string>(size); }

void KeepSpare(std::string buffer) { Keep(std::move(buffer)); }

void KeepSpare(std::u16string buffer) { Keep(std::move(buffer)); }

}  // namespace mailslice::platform
