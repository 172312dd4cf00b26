// A fast search for any of a few bytes in long 8-bit texts (HTML pages of megabytes), with the
// result of std::string_view::find_first_of. Inline, as it is called once for every attribute
// of a page and mostly finds its byte in the first block.
#ifndef MAILSLICE_PLATFORM_BYTE_SEARCH_H
#define MAILSLICE_PLATFORM_BYTE_SEARCH_H

#include <bit>
#include <cstddef>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace mailslice::platform {

#ifdef __SSE2__
// `byte` in each of the sixteen places, made in registers: _mm_set1_epi8 of a byte that is not
// a constant goes through memory, whose partial store then stalls the load.
inline __m128i EveryByte(char byte) {
  constexpr unsigned kEveryByteOfWord = 0x01010101u;
  return _mm_shuffle_epi32(
      _mm_cvtsi32_si128(static_cast<int>(static_cast<unsigned char>(byte) * kEveryByteOfWord)), 0);
}
#endif

// The index of the first byte at or after `from` in `text` that is one of `bytes`, or npos.
template <typename... Bytes>
size_t FindAnyByte(std::string_view text, size_t from, Bytes... bytes) {
  constexpr size_t kBytesPerBlock = 16;
  size_t at = from;
#ifdef __SSE2__
  while (at < text.size() && text.size() - at >= kBytesPerBlock) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
    __m128i found = _mm_setzero_si128();
    ((found = _mm_or_si128(found, _mm_cmpeq_epi8(block, EveryByte(bytes)))), ...);
    auto hits = static_cast<unsigned>(_mm_movemask_epi8(found));
    if (hits != 0) return at + static_cast<size_t>(std::countr_zero(hits));
    at += kBytesPerBlock;
  }
#endif
  for (; at < text.size(); ++at) {
    if (((text[at] == bytes) || ...)) return at;
  }
  return std::string_view::npos;
}

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_BYTE_SEARCH_H
