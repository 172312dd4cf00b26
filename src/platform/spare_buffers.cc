#include "platform/spare_buffers.h"

#include <utility>

#include "platform/large_pages.h"

namespace mailslice::platform {
namespace {

// Room for the bodies of the messages the devices load (up to 9.9 MB), not more.
constexpr size_t kMostKeptBytes = size_t{16} << 20;
constexpr size_t kMostRoomPerSize = 2;

template <typename String>
String& Kept() {
  thread_local String kept;
  return kept;
}

template <typename String>
String Take(size_t size) {
  String& kept = Kept<String>();
  String taken;
  if (kept.capacity() >= size && kept.capacity() / kMostRoomPerSize <= size) taken.swap(kept);
  taken.clear();
  ReserveLarge(taken, size);
  return taken;
}

template <typename String>
void Keep(String buffer) {
  String& kept = Kept<String>();
  size_t bytes = buffer.capacity() * sizeof(typename String::value_type);
  if (bytes > kMostKeptBytes || buffer.capacity() <= kept.capacity()) return;
  kept = std::move(buffer);
}

}  // namespace

std::string TakeSpareBytes(size_t size) { return Take<std::string>(size); }

std::u16string TakeSpareWide(size_t size) { return Take<std::u16string>(size); }

void KeepSpare(std::string buffer) { Keep(std::move(buffer)); }

void KeepSpare(std::u16string buffer) { Keep(std::move(buffer)); }

}  // namespace mailslice::platform
