#include "codec/substring_search.h"

#include <cstring>

#include "codec/avx2.h"

namespace mailslice::codec {
namespace {

constexpr size_t npos = std::string_view::npos;

#ifdef MAILSLICE_AVX2_PATHS
constexpr size_t kBlock = 32;

// Wojciech Muła's filter: 32 places at a time, a place is a candidate when the needle's first,
// second and last bytes all match there; only candidates are compared in full. (With the first
// and last bytes only, a short word of common letters, such as "name", leaves a candidate in
// almost every block of English text.) Returns the first match at or after `from` among the
// places that whole blocks cover, and sets *scanned to the first place it did not look at.
__attribute__((target("avx2"))) size_t FindAvx2(std::string_view text, std::string_view needle,
                                                size_t from, size_t* scanned) {
  const size_t last = needle.size() - 1;
  const __m256i first = _mm256_set1_epi8(needle[0]);
  const __m256i second = _mm256_set1_epi8(needle[1]);
  const __m256i final = _mm256_set1_epi8(needle[last]);
  size_t at = from;
  for (; at + last + kBlock <= text.size(); at += kBlock) {
    const char* block = text.data() + at;
    __m256i starts = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block));
    __m256i seconds = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + 1));
    __m256i ends = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + last));
    __m256i matches = _mm256_and_si256(
        _mm256_and_si256(_mm256_cmpeq_epi8(starts, first), _mm256_cmpeq_epi8(seconds, second)),
        _mm256_cmpeq_epi8(ends, final));
    auto candidates = static_cast<unsigned>(_mm256_movemask_epi8(matches));
    while (candidates != 0) {
      size_t place = at + static_cast<size_t>(__builtin_ctz(candidates));
      if (std::memcmp(text.data() + place + 1, needle.data() + 1, last) == 0) return place;
      candidates &= candidates - 1;
    }
  }
  *scanned = at;
  return npos;
}
#endif

}  // namespace

size_t FindSubstring(std::string_view text, std::string_view needle, size_t from) {
  if (needle.size() < 2 || from >= text.size()) return text.find(needle, from);
#ifdef MAILSLICE_AVX2_PATHS
  if (HaveAvx2()) {
    size_t scanned = from;
    size_t found = FindAvx2(text, needle, from, &scanned);
    if (found != npos) return found;
    from = scanned;
  }
#endif
  return text.find(needle, from);
}

}  // namespace mailslice::codec
