#include "platform/wide_search.h"

#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace mailslice::platform {
namespace {

constexpr size_t kUnitsPerBlock = 8;
constexpr size_t kMostUnitsAtOnce = 3;

}  // namespace

size_t FindUnit(std::u16string_view text, char16_t unit, size_t from) {
  if (from >= text.size()) return std::u16string_view::npos;
  size_t at = from;
#ifdef __SSE2__
  const __m128i wanted = _mm_set1_epi16(static_cast<int16_t>(unit));
  while (text.size() - at >= kUnitsPerBlock) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
    auto hits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(block, wanted)));
    if (hits != 0) return at + static_cast<size_t>(std::countr_zero(hits)) / 2;
    at += kUnitsPerBlock;
  }
#endif
  for (; at < text.size(); ++at) {
    if (text[at] == unit) return at;
  }
  return std::u16string_view::npos;
}

size_t FindAnyUnit(std::u16string_view text, std::u16string_view units, size_t from) {
  if (units.empty() || units.size() > kMostUnitsAtOnce) return text.find_first_of(units, from);
  if (from >= text.size()) return std::u16string_view::npos;
  size_t at = from;
#ifdef __SSE2__
  // A set of fewer than three repeats its first unit, which finds nothing more.
  const __m128i first = _mm_set1_epi16(static_cast<int16_t>(units[0]));
  const __m128i second = _mm_set1_epi16(static_cast<int16_t>(units[units.size() > 1 ? 1 : 0]));
  const __m128i third = _mm_set1_epi16(static_cast<int16_t>(units[units.size() - 1]));
  while (text.size() - at >= kUnitsPerBlock) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
    __m128i found =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(block, first), _mm_cmpeq_epi16(block, second)),
                     _mm_cmpeq_epi16(block, third));
    auto hits = static_cast<unsigned>(_mm_movemask_epi8(found));
    if (hits != 0) return at + static_cast<size_t>(std::countr_zero(hits)) / 2;
    at += kUnitsPerBlock;
  }
#endif
  for (; at < text.size(); ++at) {
    if (units.find(text[at]) != std::u16string_view::npos) return at;
  }
  return std::u16string_view::npos;
}

// Eight places at a time, a place being a candidate when the needle's first and last units
// both match there (a header field's name between a line break and its colon, say), and only
// candidates compared in full; the places no whole block covers go to the standard search.
size_t FindUnits(std::u16string_view text, std::u16string_view needle, size_t from) {
  if (needle.size() < 2)
    return needle.empty() ? text.find(needle, from) : FindUnit(text, needle[0], from);
  size_t at = from;
#ifdef __SSE2__
  const size_t last = needle.size() - 1;
  const __m128i first = _mm_set1_epi16(static_cast<int16_t>(needle[0]));
  const __m128i final = _mm_set1_epi16(static_cast<int16_t>(needle[last]));
  while (at < text.size() && text.size() - at >= last + kUnitsPerBlock) {
    __m128i starts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
    __m128i ends = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at + last));
    auto hits = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_and_si128(_mm_cmpeq_epi16(starts, first), _mm_cmpeq_epi16(ends, final))));
    while (hits != 0) {
      size_t place = at + static_cast<size_t>(std::countr_zero(hits)) / 2;
      if (text.substr(place, needle.size()) == needle) return place;
      hits &= hits - 1;  // each unit sets two bits
      hits &= hits - 1;
    }
    at += kUnitsPerBlock;
  }
#endif
  return text.find(needle, at);
}

}  // namespace mailslice::platform
